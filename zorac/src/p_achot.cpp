// The functions of special interest: they decide the cost of a decoder.
#include "kv.h"

[[maybe_unused]] static const bool hot_zorsSynthesisFilter_SBR_CToR_32fc32f_D2L =
    bxRegHotFunction("zorsSynthesisFilter_SBR_CToR_32fc32f_D2L") != 0;
[[maybe_unused]] static const bool hot_zorsSynthesisFilter_PQMF_MP3_32f =
    bxRegHotFunction("zorsSynthesisFilter_PQMF_MP3_32f") != 0;
[[maybe_unused]] static const bool hot_zorsPredictCoef_SBR_C_32fc_D2L =
    bxRegHotFunction("zorsPredictCoef_SBR_C_32fc_D2L") != 0;
[[maybe_unused]] static const bool hot_zorsMDCTInv_32f = bxRegHotFunction("zorsMDCTInv_32f") != 0;
[[maybe_unused]] static const bool hot_zorsAnalysisFilter_SBR_RToC_32f32fc_D2L =
    bxRegHotFunction("zorsAnalysisFilter_SBR_RToC_32f32fc_D2L") != 0;
