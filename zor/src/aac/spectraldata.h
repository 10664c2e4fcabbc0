/** \file
 * The spectral data of a channel stream.
 */
#ifndef ZOR_AAC_SPECTRALDATA_H
#define ZOR_AAC_SPECTRALDATA_H

#include "common/bitreader.h"

namespace zor::aac {

/**
 * Decodes `count` lines (a multiple of 4) of a spectral book, 1 to 11.
 * \return false where an escape is longer than 8191 can be.
 */
bool decodeLines(BitReader& in, int book, Zor32s* lines, int count);

} // namespace zor::aac

#endif
