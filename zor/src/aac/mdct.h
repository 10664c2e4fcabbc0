/** \file
 * The transform that the AAC MDCT and long-term prediction share.
 */
#ifndef ZOR_AAC_MDCT_H
#define ZOR_AAC_MDCT_H

#include "aac/windows.h"

namespace zor::aac {

/**
 * Windows and transforms 2 * length samples to `length` lines.
 * \param first, second  the two halves of the samples; neither overlaps `lines`
 * \param length         1024 or 128
 * \param work           2 * length elements
 */
void forwardMdct(const Zor32s* first, const Zor32s* second, WindowHalves<Zor32s> window, Zor32s* lines,
                 int length, Zor32s* work);

} // namespace zor::aac

#endif
