/** \file
 * Band signals of the SBR tests: lists of lines, a time slot each.
 */
#ifndef BANDLINES_H
#define BANDLINES_H

#include "suitetest.h"

#include <vector>

/** Lines in the three forms, each in a vector of its own: real parts, imaginary parts, pairs of both. */
struct BandLines {
    kvVector re, im, pairs;
    std::vector<Zor32f*> reList, imList;
    std::vector<Zor32fc*> pairList;

    /** As vectors of a test; `first`: the first one is also the first of the combination. */
    bool create(SuiteTest& test, int lines, int width, bool first) {
        const int len = lines * width;
        if (!(first ? test.makeFirst(re, kv32f, len) : test.make(re, kv32f, len)) ||
            !test.make(im, kv32f, len) || !test.make(pairs, kv32fc, len))
            return false;
        reList.clear();
        imList.clear();
        pairList.clear();
        for (int i = 0; i < lines; ++i) {
            reList.push_back(re.p32f + i * width);
            imList.push_back(im.p32f + i * width);
            pairList.push_back(pairs.p32fc + i * width);
        }
        return true;
    }

    /** Sets one value in all three forms. */
    void set(int line, int band, Zor32f real, Zor32f imaginary) {
        reList[static_cast<std::size_t>(line)][band] = real;
        imList[static_cast<std::size_t>(line)][band] = imaginary;
        pairList[static_cast<std::size_t>(line)][band] = {real, imaginary};
    }
};

#endif
