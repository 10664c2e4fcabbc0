// The public functions of SBR prediction coefficients.
#include "sbr/predict.h"

#include "common/check.h"
#include "zorac/sbr.h"

using namespace zor;

namespace {

template <class Lines, class... Results>
ZorStatus check(Lines src, int numBands, int length, const Results*... results) {
    if (anyNull(src, results...))
        return zorStsNullPtrErr;
    if (numBands < 1 || length < 1)
        return zorStsSizeErr;
    return anyNullIn(src, length + predictPast) ? zorStsNullPtrErr : zorStsNoErr;
}

} // namespace

extern "C" {

ZorStatus zorsPredictCoef_SBR_R_32f_D2L(const Zor32f* const src[], Zor32f* alpha0, Zor32f* alpha1,
                                        int numBands, int length) {
    if (const ZorStatus status = check(src, numBands, length, alpha0, alpha1))
        return status;
    kernels<PredictKernels>().real(src, alpha0, alpha1, numBands, length);
    return zorStsNoErr;
}

ZorStatus zorsPredictCoef_SBR_C_32f_D2L(const Zor32f* const srcRe[], const Zor32f* const srcIm[],
                                        Zor32f* alpha0Re, Zor32f* alpha0Im, Zor32f* alpha1Re,
                                        Zor32f* alpha1Im, int numBands, int length) {
    if (const ZorStatus status = check(srcRe, numBands, length, alpha0Re, alpha0Im, alpha1Re, alpha1Im))
        return status;
    if (const ZorStatus status = check(srcIm, numBands, length))
        return status;
    kernels<PredictKernels>().split(srcRe, srcIm, alpha0Re, alpha0Im, alpha1Re, alpha1Im, numBands, length);
    return zorStsNoErr;
}

ZorStatus zorsPredictCoef_SBR_C_32fc_D2L(const Zor32fc* const src[], Zor32fc* alpha0, Zor32fc* alpha1,
                                         int numBands, int length) {
    if (const ZorStatus status = check(src, numBands, length, alpha0, alpha1))
        return status;
    kernels<PredictKernels>().pairs(src, alpha0, alpha1, numBands, length);
    return zorStsNoErr;
}
}
