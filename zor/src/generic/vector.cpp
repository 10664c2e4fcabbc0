// Functions on plain vectors: scaling, conversion, powers.
#include "common/check.h"
#include "generic/kernel_tables.h"
#include "zors.h"

#include <cmath>

using namespace zor;

namespace {

bool areBandEnds(const int* bandEnd, int numBands) {
    for (int band = 0, begin = 0; band < numBands; begin = bandEnd[band++])
        if (bandEnd[band] < begin)
            return false;
    return true;
}

/** Runs a kernel with arguments (src, dst, length). */
template <class Source, class Target>
ZorStatus convert(void (*const VectorKernels::*kernel)(const Source*, Target*, int), const Source* src,
                  Target* dst, int length) {
    if (const ZorStatus status = checkVectors(length, src, dst))
        return status;
    (kernels<VectorKernels>().*kernel)(src, dst, length);
    return zorStsNoErr;
}

/** The same with a factor of 2^-scaleFactor. */
template <class Source, class Target>
ZorStatus convert(void (*const VectorKernels::*kernel)(const Source*, Target*, int, float), const Source* src,
                  Target* dst, int length, int scaleFactor) {
    if (const ZorStatus status = checkVectors(length, src, dst))
        return status;
    if (scaleFactor < -31 || scaleFactor > 31)
        return zorStsScaleRangeErr;
    (kernels<VectorKernels>().*kernel)(src, dst, length, std::ldexp(1.0f, -scaleFactor));
    return zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsScale_32f_I(Zor32f* srcDst, const Zor32f* factor, const int* bandEnd, int numBands) {
    if (const ZorStatus status = checkVectors(numBands, srcDst, factor, bandEnd))
        return status;
    if (!areBandEnds(bandEnd, numBands))
        return zorStsBadArgErr;
    const auto scale = kernels<VectorKernels>().scale;
    for (int band = 0, begin = 0; band < numBands; begin = bandEnd[band++])
        scale(srcDst + begin, factor[band], bandEnd[band] - begin);
    return zorStsNoErr;
}

ZorStatus zorsCalcSF_16s32f(const Zor16s* src, int offset, Zor32f* dst, int length) {
    if (const ZorStatus status = checkVectors(length, src, dst))
        return status;
    kernels<VectorKernels>().calcSF(src, offset, dst, length);
    return zorStsNoErr;
}

ZorStatus zorsMakeFloat_16s32f(const Zor16s* src, Zor32f* dst, int length) {
    return convert(&VectorKernels::makeFloat, src, dst, length);
}

ZorStatus zorsConvert_32s32f_Sfs(const Zor32s* src, Zor32f* dst, int length, int scaleFactor) {
    return convert(&VectorKernels::toFloat, src, dst, length, scaleFactor);
}

ZorStatus zorsConvert_32f32s_Sfs(const Zor32f* src, Zor32s* dst, int length, int scaleFactor) {
    return convert(&VectorKernels::toInt32, src, dst, length, scaleFactor);
}

ZorStatus zorsConvert_32f16s_Sfs(const Zor32f* src, Zor16s* dst, int length, int scaleFactor) {
    return convert(&VectorKernels::toInt16, src, dst, length, scaleFactor);
}

ZorStatus zorsPow34_32f(const Zor32f* src, Zor32f* dst, int length) {
    return convert(&VectorKernels::pow34, src, dst, length);
}

ZorStatus zorsPow34_32f16s(const Zor32f* src, Zor16s* dst, int length) {
    return convert(&VectorKernels::pow34ToInt, src, dst, length);
}

ZorStatus zorsPow43_16s32f(const Zor16s* src, Zor32f* dst, int length) {
    return convert(&VectorKernels::pow43, src, dst, length);
}
}
