/** \file
 * The hybrid filter bank of layer III behind the polyphase bank.
 */
#include "ac/mp3_kernels.h"
#include "zorac.h"

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

ZorStatus zorsMDCTFwd_MP3_32s(const Zor32s* pSrc, Zor32s* pDst, int blockType, int mixedBlock,
                              Zor32s* pOverlap) {
    if (!pSrc || !pDst || !pOverlap)
        return zorStsNullPtrErr;
    if (!isBlockType(blockType))
        return zorStsBadArgErr;
    zor::kernels<zor::mp3::MdctKernels>().forward(pSrc, pOverlap, pDst, blockType, mixedBlock != 0);
    return zorStsNoErr;
}

ZorStatus zorsMDCTInv_MP3_32s(const Zor32s* pSrc, Zor32s* pDst, Zor32s* pOverlap, int nonZeroBound,
                              int* pPrevBlocks, int blockType, int mixedBlock) {
    if (!pSrc || !pDst || !pOverlap || !pPrevBlocks)
        return zorStsNullPtrErr;
    if (!isBlockType(blockType) || *pPrevBlocks < 0 || *pPrevBlocks > subbands)
        return zorStsBadArgErr;
    if (nonZeroBound < 0 || nonZeroBound > lines)
        return zorStsSizeErr;
    const bool mixed = mixedBlock != 0;
    const int bands = activeSubbands(nonZeroBound, blockType, mixed);
    zor::kernels<zor::mp3::MdctKernels>().inverse(pSrc, pOverlap, pDst, nonZeroBound, bands, *pPrevBlocks,
                                                  blockType, mixed);
    *pPrevBlocks = bands;
    return zorStsNoErr;
}

} // extern "C"
