/** \file
 * Band signals of the SBR tests: lists of lines, a time slot each.
 */
#ifndef BANDLINES_H
#define BANDLINES_H

#include "suitedata.h"

#include <vector>

/** Lines in the three forms, each in a vector of its own: real parts, imaginary parts, pairs of both. */
struct BandLines {
    kvVector re, im, pairs;
    std::vector<Zor32f*> reList, imList;
    std::vector<Zor32fc*> pairList;

    /** `place` is that of the first of the three vectors. */
    bool create(int lines, int width, int place) {
        const int len = lines * width;
        if (!makeVector(re, kv32f, len, place) || !makeVector(im, kv32f, len, place + 1) ||
            !makeVector(pairs, kv32fc, len, place + 2))
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

    void free() {
        for (kvVector* vector : {&re, &im, &pairs})
            vector->deleteVector();
    }
};

#endif
