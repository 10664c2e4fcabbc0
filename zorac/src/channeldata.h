/** \file
 * Samples of several channels, together and apart.
 */
#ifndef CHANNELDATA_H
#define CHANNELDATA_H

#include "suitedata.h"

/** One vector of interleaved samples, and one for each channel. */
struct ChannelData {
    static constexpr int maxChannels = 32;

    kvVector together, apart[maxChannels];
    Zor16s* apart16s[maxChannels] = {};
    Zor32f* apart32f[maxChannels] = {};
    int channels = 0, len = 0;

    /** False for a number of channels or a length that is not to be had. */
    bool create(kvType type, int numChannels, int length) {
        channels = numChannels;
        len = length;
        if (channels < 1 || channels > maxChannels || !makeVector(together, type, channels * len))
            return false;
        for (int i = 0; i < channels; ++i) {
            if (!makeVector(apart[i], type, len, i + 1))
                return false;
            apart16s[i] = apart[i].p16s;
            apart32f[i] = apart[i].p32f;
        }
        return true;
    }

    void free() {
        together.deleteVector();
        for (kvVector& channel : apart)
            channel.deleteVector();
    }
};

#endif
