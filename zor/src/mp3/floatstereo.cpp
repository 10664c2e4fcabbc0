/** \file
 * Stereo decoding on lines in floating point.
 */
#include "common/check.h"
#include "mp3/intensity.h"
#include "mp3/kernel_tables.h"
#include "zorac/mp3.h"

extern "C" {

ZorStatus zorsDecodeMidSide_MP3_32f_I(Zor32f* srcDstL, Zor32f* srcDstR, int length) {
    if (const ZorStatus status = zor::checkVectors(length, srcDstL, srcDstR); status < 0)
        return status;
    constexpr auto scale = static_cast<float>(1 / std::numbers::sqrt2);
    for (int i = 0; i < length; ++i) {
        const float mid = srcDstL[i], side = srcDstR[i];
        srcDstL[i] = (mid + side) * scale;
        srcDstR[i] = (mid - side) * scale;
    }
    return zorStsNoErr;
}

ZorStatus zorsDecodeIntensity_MP3_32f_I(Zor32f* srcDstL, Zor32f* dstR, int length, int id, int position,
                                        int intensityScale) {
    using namespace zor::mp3;
    if (const ZorStatus status = zor::checkVectors(length, srcDstL, dstR); status < 0)
        return status;
    if ((id != 0 && id != 1) || position < 0 || position >= (id == 1 ? mpeg1Positions : lsfPositions))
        return zorStsBadArgErr;
    const Balance balance = id == 1 ? mpeg1Balance(position) : lsfBalance(position, intensityScale);
    for (int i = 0; i < length; ++i) {
        const float carrier = srcDstL[i];
        srcDstL[i] = carrier * balance.left;
        dstR[i] = carrier * balance.right;
    }
    return zorStsNoErr;
}

} // extern "C"
