/** \file
 * What the fuzz targets share.
 */
#ifndef FUZZINPUT_H
#define FUZZINPUT_H

#include "foundation/bxstring.h"

#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <string_view>
#include <vector>

/** Ends the program, with the property that does not hold, in a way on which the fuzzer keeps the input. */
inline void require(bool holds, const char* property) {
    if (!holds) {
        std::fprintf(stderr, "DOES NOT HOLD: %s\n", property);
        // The sanitizers' business, whose reports the fuzzer follows; abort it may take for one under way.
        *static_cast<volatile char*>(nullptr) = 0;
        std::abort();
    }
}

/** The text as the harness would have it from a file: up to the first NUL. */
inline bxString toText(std::string_view text) {
    return bxString(text.substr(0, text.find('\0')));
}

/** The pieces of a text between separators; one more than there are separators. */
inline std::vector<std::string> split(std::string_view text, char separator) {
    std::vector<std::string> pieces(1);
    for (const char c : text)
        if (c == separator)
            pieces.emplace_back();
        else
            pieces.back() += c;
    return pieces;
}

#endif
