/** \file
 * Text forms of the plain value types that parameters hold.
 */
#ifndef BXTEXTFORM_H
#define BXTEXTFORM_H

#include "foundation/bxstring.h"
#include "zortypes.h"

/**
 * How a plain value is written and read. `fromText` sets the text's conversion-failed flag when the text is
 * no value, and then gives a zero value; an empty text is no failure and gives a zero value too.
 */
template <class T>
struct bxTextForm;

/** Decimal, or hexadecimal after 0x when read. */
template <>
struct bxTextForm<int> {
    static bxString toText(int value);
    static int fromText(bxString& text);
};

/** "WIDTHxHEIGHT", for example 64x48; one number alone is a square. */
template <>
struct bxTextForm<ZoriSize> {
    static bxString toText(ZoriSize value);
    static ZoriSize fromText(bxString& text);
};

inline bool operator==(const ZoriSize& a, const ZoriSize& b) {
    return a.width == b.width && a.height == b.height;
}

#endif
