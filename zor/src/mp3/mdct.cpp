/** \file
 * The hybrid filter bank of layer III behind the polyphase bank.
 */
#include "mp3/kernel_tables.h"
#include "zorac/mp3.h"

#include <algorithm>

using zor::mp3::lines;
using zor::mp3::slots;
using zor::mp3::subbands;

namespace {

constexpr bool isBlockType(int blockType) {
    return blockType >= 0 && blockType <= 3;
}

/** Sub-bands that can hold data below the bound; the alias butterflies reach one further. */
int activeSubbands(int nonZeroBound, int blockType, bool mixed) {
    const int bands = (nonZeroBound + slots - 1) / slots;
    const bool spreads = blockType != 2 || (mixed && bands == 1);
    return bands == 0 || !spreads ? bands : std::min(bands + 1, subbands);
}

} // namespace

extern "C" {

ZorStatus zorsMDCTFwd_MP3_32s(const Zor32s* src, Zor32s* dst, int blockType, int mixedBlock,
                              Zor32s* overlap) {
    if (!src || !dst || !overlap)
        return zorStsNullPtrErr;
    if (!isBlockType(blockType))
        return zorStsBadArgErr;
    zor::kernels<zor::mp3::MdctKernels>().forward(src, overlap, dst, blockType, mixedBlock != 0);
    return zorStsNoErr;
}

ZorStatus zorsMDCTInv_MP3_32s(const Zor32s* src, Zor32s* dst, Zor32s* overlap, int nonZeroBound,
                              int* prevBlocks, int blockType, int mixedBlock) {
    if (!src || !dst || !overlap || !prevBlocks)
        return zorStsNullPtrErr;
    if (!isBlockType(blockType) || *prevBlocks < 0 || *prevBlocks > subbands)
        return zorStsBadArgErr;
    if (nonZeroBound < 0 || nonZeroBound > lines)
        return zorStsSizeErr;
    const bool mixed = mixedBlock != 0;
    const int bands = activeSubbands(nonZeroBound, blockType, mixed);
    zor::kernels<zor::mp3::MdctKernels>().inverse(src, overlap, dst, nonZeroBound, bands, *prevBlocks,
                                                  blockType, mixed);
    *prevBlocks = bands;
    return zorStsNoErr;
}

} // extern "C"
