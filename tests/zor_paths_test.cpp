// Code paths give the same bits wherever results are integers that a stream's next steps build on.
#include "zorac.h"
#include "zorsupport.h"

namespace {

using Lines = std::vector<Zor32s>;

/** What the AAC tools make of the same lines on the code path in force, one after another. */
Lines aacTools(int maxSfb, const std::vector<int>& groups, int winLen) {
    const int size = static_cast<int>(groups.size()) * maxSfb, count = static_cast<int>(groups.size());
    Lines left = randomInts<Zor32s>(1024, -8191, 8191, 31), right = left, noise = left;
    const auto factors = randomInts<Zor16s>(size, 60, 140, 32);
    const auto books = randomInts<Zor8u>(size, 1, 15, 33), used = randomInts<Zor8u>(size, 0, 1, 34);
    Lines bandState(static_cast<std::size_t>(size));
    Zor32u state = 1;
    zorsQuantInv_AAC_32s_I(left.data(), factors.data(), books.data(), count, groups.data(), maxSfb, 0,
                           winLen);
    zorsDecodeMsStereo_AAC_32s_I(left.data(), right.data(), 1, used.data(), books.data(), count,
                                 groups.data(), maxSfb, 0, winLen);
    zorsDecodeIsStereo_AAC_32s(left.data(), right.data(), factors.data(), 1, used.data(), books.data(), count,
                               groups.data(), maxSfb, 0, winLen);
    zorsDecodePNS_AAC_32s(noise.data(), factors.data(), books.data(), &state, bandState.data(), 0,
                          used.data(), count, groups.data(), maxSfb, 0, winLen);
    left.insert(left.end(), right.begin(), right.end());
    left.insert(left.end(), noise.begin(), noise.end());
    return left;
}

TEST(Paths, AacToolsGiveTheSameBits) {
    struct Frame {
        int maxSfb;
        std::vector<int> groups;
        int winLen;
    };
    for (const Frame& frame : {Frame{41, {1}, 1024}, Frame{9, {3, 1, 4}, 128}}) {
        zorInitCpu(zorCpuUnknown);
        const Lines portable = aacTools(frame.maxSfb, frame.groups, frame.winLen);
        for (const ZorPath& path : zorPaths) {
            if (zorInitCpu(path.cpuType) < 0)
                continue;
            EXPECT_EQ(portable, aacTools(frame.maxSfb, frame.groups, frame.winLen)) << path.name;
        }
    }
    zorInit();
}

/** A granule in each window, with all lines or few, behind one that reaches further; the states stay in the
 * result. */
Lines mp3Windows() {
    Lines all;
    for (const int bound : {9, 100, 576})
        for (const int blockType : {0, 1, 2, 3}) {
            const Lines lines = randomInts<Zor32s>(576, -(1 << 26), 1 << 26, 35);
            Lines overlap(576, 2), samples(576), spectrum(576);
            int blocks = 0;
            zorsMDCTInv_MP3_32s(lines.data(), samples.data(), overlap.data(), 200, &blocks, 0, 0);
            zorsMDCTInv_MP3_32s(lines.data(), samples.data(), overlap.data(), bound, &blocks, blockType, 1);
            all.insert(all.end(), samples.begin(), samples.end());
            all.insert(all.end(), overlap.begin(), overlap.end());
            zorsMDCTFwd_MP3_32s(lines.data(), spectrum.data(), blockType, 1, overlap.data());
            all.insert(all.end(), spectrum.begin(), spectrum.end());
        }
    return all;
}

TEST(Paths, Mp3WindowsGiveTheSameBitsAndStates) {
    zorInitCpu(zorCpuUnknown);
    const Lines portable = mp3Windows();
    for (const ZorPath& path : zorPaths) {
        if (zorInitCpu(path.cpuType) < 0)
            continue;
        EXPECT_EQ(portable, mp3Windows()) << path.name;
    }
    zorInit();
}

} // namespace
