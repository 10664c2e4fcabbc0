/** \file
 * Samples of several channels, together and apart.
 */
#ifndef CHANNELDATA_H
#define CHANNELDATA_H

#include "suitetest.h"

#include <climits>

/** One vector of interleaved samples, and one for each channel. */
struct ChannelData {
    static constexpr int maxChannels = 32;

    kvVector together, apart[maxChannels];
    Zor16s* apart16s[maxChannels] = {};
    Zor32f* apart32f[maxChannels] = {};
    int channels = 0, len = 0;

    /** As vectors of a test; false for a number of channels or a length that is not to be had. */
    bool create(SuiteTest& test, kvType type, const bxIterator<int>& numChannels,
                const bxIterator<int>& length) {
        if (!test.within({{numChannels, 1, maxChannels}, {length, 1, INT_MAX / maxChannels}}))
            return false;
        channels = numChannels.value();
        len = length.value();
        if (!test.makeFirst(together, type, channels * len))
            return false;
        for (int i = 0; i < channels; ++i) {
            if (!test.make(apart[i], type, len))
                return false;
            apart16s[i] = apart[i].p16s;
            apart32f[i] = apart[i].p32f;
        }
        return true;
    }
};

#endif
