/** \file
 * The windows and transforms that the AAC MDCT and long-term prediction share.
 */
#ifndef ZOR_AAC_MDCT_H
#define ZOR_AAC_MDCT_H

#include "aac/bands.h"
#include "zorac/aac.h"

namespace zor::aac {

/** The two halves of a window; 31 bits behind the binary point. */
struct WindowHalves {
    const Zor32s* rise;
    const Zor32s* fall;
};

/** Window sequence and shapes of a frame and the one before it. */
struct WindowChoice {
    int sequence, shape, prevShape;

    [[nodiscard]] bool valid() const {
        return sequence >= zorAacOnlyLong && sequence <= zorAacLongStop && (shape | 1) == 1 &&
               (prevShape | 1) == 1;
    }
    [[nodiscard]] bool isShort() const { return sequence == zorAacEightShort; }
};

/** The window of a long sequence. */
WindowHalves longWindow(const WindowChoice& choice);

/** The window of a short window whose first half has the shape `before`. */
WindowHalves shortWindow(int before, int shape);

/**
 * Windows and transforms 2 * length samples to `length` lines.
 * \param first, second  the two halves of the samples; neither overlaps `lines`
 * \param length         1024 or 128
 * \param work           2 * length elements
 */
void forwardMdct(const Zor32s* first, const Zor32s* second, WindowHalves window, Zor32s* lines, int length,
                 Zor32s* work);

} // namespace zor::aac

#endif
