#include "aac/bands.h"
#include "aac/tns_kernels.h"
#include "tables/aac_tns_max_bands.h"
#include "zorac/aacfloat.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <numbers>

namespace zor::aac {

namespace {

/** What a call was given, checked. */
struct TnsCall {
    const int* numFilt;
    const int* regionLen;
    const int* order;
    const int* coefRes;
    const Zor8s* coef;
    const int* direction;
    int lastBand; /**< filters end below this band */
    Bands bands;
    int winLen;
    int windows;
};

enum class TnsSense { decode, encode };

bool rangeHolds(int value, int low, int high) {
    return low <= value && value <= high;
}

int maxOrder(int profile, int winLen) {
    if (winLen == shortLength)
        return 7;
    return profile == zorAacMain ? tnsMaxOrder : 12;
}

ZorStatus checkFilters(const TnsCall& call, int profile) {
    const int maxFilters = call.winLen == shortLength ? 1 : 3;
    int filter = 0;
    for (int window = 0; window < call.windows; ++window) {
        if (!rangeHolds(call.numFilt[window], 0, maxFilters))
            return zorStsBadArgErr;
        if (call.numFilt[window] > 0 && !rangeHolds(call.coefRes[window], 3, 4))
            return zorStsBadArgErr;
        for (const int end = filter + call.numFilt[window]; filter < end; ++filter)
            if (call.regionLen[filter] < 0 || !rangeHolds(call.direction[filter], 0, 1) ||
                !rangeHolds(call.order[filter], 0, maxOrder(profile, call.winLen)))
                return zorStsBadArgErr;
    }
    return zorStsNoErr;
}

/** Reflection coefficients of all codes of 3 and 4 bits, by the low bits of the code (ISO/IEC
 * 14496-3 4.6.9.3). */
struct ReflectionTable {
    std::array<std::array<double, 16>, 2> values{};

    ReflectionTable() {
        for (const int bits : {3, 4}) {
            const int half = 1 << (bits - 1);
            for (int code = -half; code < half; ++code) {
                const double steps = code >= 0 ? half - 0.5 : half + 0.5;
                values[static_cast<std::size_t>(bits - 3)][static_cast<std::size_t>(code & (2 * half - 1))] =
                    std::sin(code / steps * std::numbers::pi / 2);
            }
        }
    }

    [[nodiscard]] double at(int code, int bits) const {
        return values[static_cast<std::size_t>(bits - 3)][static_cast<std::size_t>(code & ((1 << bits) - 1))];
    }
};

const ReflectionTable reflection;

/** The least e with value < 2^e, for values above 0; below -1000 for 0. */
int exponentOf(double value) {
    return static_cast<int>(std::bit_cast<Zor64u>(value) >> 52) - 1022;
}

/** The direct-form predictor of a lattice with these coefficients, by the step-up recursion. */
std::array<double, tnsMaxOrder> directForm(const Zor8s* codes, int order, int bits) {
    std::array<double, tnsMaxOrder> a{};
    for (int m = 0; m < order; ++m) {
        const double k = reflection.at(codes[m], bits);
        for (int i = 0, j = m - 1; i <= j; ++i, --j) {
            const double low = a[static_cast<std::size_t>(i)];
            const double high = a[static_cast<std::size_t>(j)];
            a[static_cast<std::size_t>(i)] = low + k * high;
            a[static_cast<std::size_t>(j)] = high + k * low;
        }
        a[static_cast<std::size_t>(m)] = k;
    }
    return a;
}

/** The filters on lines of a type. */
template <class Line>
struct Filters;

template <>
struct Filters<Zor32s> {
    static TnsPredictor predictor(const std::array<double, tnsMaxOrder>& a, int order) {
        double total = 0;
        for (const double value : a)
            total += std::abs(value);
        TnsPredictor result{order, 30 - std::max(exponentOf(total), 1), {}};
        const auto scale = static_cast<double>(1 << result.shift);
        for (std::size_t m = 0; m < a.size(); ++m) {
            const double coef = a[m] * scale;
            result.coef[m] = static_cast<Zor32s>(coef + std::copysign(0.5, coef));
        }
        return result;
    }
    static auto allPole() { return kernels<TnsKernels>().allPole; }
    static auto allZero() { return kernels<TnsKernels>().allZero; }
};

template <>
struct Filters<Zor32f> {
    static TnsFloatPredictor predictor(const std::array<double, tnsMaxOrder>& a, int order) {
        TnsFloatPredictor result{order, {}};
        for (std::size_t m = 0; m < a.size(); ++m)
            result.coef[m] = static_cast<float>(a[m]);
        return result;
    }
    static auto allPole() { return kernels<TnsKernels>().allPoleFloat; }
    static auto allZero() { return kernels<TnsKernels>().allZeroFloat; }
};

/** Filters the lines first to last - 1 from the end that the direction names. */
template <class Line, class Predictor>
void filterRegion(TnsSense sense, const Predictor& filter, Line* spectrum, int first, int last, bool down) {
    // Ahead of the lines stands the filter's memory, which begins as zeros.
    constexpr int memory = 32;
    alignas(64) Line lines[memory + frameLength];
    alignas(64) Line filtered[frameLength];
    const int length = last - first;
    std::fill_n(lines, memory, Line{});
    if (down)
        std::reverse_copy(spectrum + first, spectrum + last, lines + memory);
    else
        std::copy(spectrum + first, spectrum + last, lines + memory);

    const Line* result = lines + memory;
    if (sense == TnsSense::decode) {
        Filters<Line>::allPole()(filter, lines + memory, length);
    } else {
        Filters<Line>::allZero()(filter, lines + memory, filtered, length);
        result = filtered;
    }
    if (down)
        std::reverse_copy(result, result + length, spectrum + first);
    else
        std::copy(result, result + length, spectrum + first);
}

template <class Line>
void run(TnsSense sense, const TnsCall& call, Line* spectrum) {
    const Zor8s* codes = call.coef;
    int filter = 0;
    for (int window = 0; window < call.windows; ++window, spectrum += call.winLen) {
        int bottom = call.bands.count;
        for (const int end = filter + call.numFilt[window]; filter < end; ++filter) {
            const int top = bottom;
            bottom = top - std::min(call.regionLen[filter], top);
            const int first = call.bands.offset[std::min(bottom, call.lastBand)];
            const int last = call.bands.offset[std::min(top, call.lastBand)];
            const int order = call.order[filter];
            if (order > 0 && first < last)
                filterRegion(sense,
                             Filters<Line>::predictor(directForm(codes, order, call.coefRes[window]), order),
                             spectrum, first, last, call.direction[filter] == 1);
            codes += order;
        }
    }
}

template <class Line>
ZorStatus shapeNoise(TnsSense sense, Line* srcDst, TnsCall call, int maxSfb, int profile,
                     int samplingRateIndex) {
    if (!srcDst || !call.numFilt || !call.regionLen || !call.order || call.coefRes == nullptr ||
        call.coef == nullptr || call.direction == nullptr)
        return zorStsNullPtrErr;
    if (!rangeHolds(samplingRateIndex, 0, samplingRates - 1) ||
        (profile != zorAacMain && profile != zorAacLC && profile != zorAacLTP))
        return zorStsBadArgErr;
    call.bands = bands(samplingRateIndex, call.winLen);
    if (call.bands.count == 0 || !rangeHolds(maxSfb, 0, call.bands.count))
        return zorStsSizeErr;
    const bool isShort = call.winLen == shortLength;
    call.windows = isShort ? shortWindows : 1;
    namespace limits = tables::aac_tns_max_bands;
    call.lastBand = std::min<int>(maxSfb, isShort ? limits::short_bands[samplingRateIndex]
                                                  : limits::long_bands[samplingRateIndex]);
    const ZorStatus status = checkFilters(call, profile);
    if (status == zorStsNoErr)
        run(sense, call, srcDst);
    return status;
}

} // namespace

} // namespace zor::aac

using namespace zor::aac;

extern "C" ZorStatus zorsDecodeTNS_AAC_32s_I(Zor32s* srcDst, const int* numFilt, const int* regionLen,
                                             const int* order, const int* coefRes, const Zor8s* coef,
                                             const int* direction, int maxSfb, int profile,
                                             int samplingRateIndex, int winLen) {
    return shapeNoise(TnsSense::decode, srcDst,
                      {numFilt, regionLen, order, coefRes, coef, direction, 0, {}, winLen, 0}, maxSfb,
                      profile, samplingRateIndex);
}

extern "C" ZorStatus zorsEncodeTNS_AAC_32s_I(Zor32s* srcDst, const int* numFilt, const int* regionLen,
                                             const int* order, const int* coefRes, const Zor8s* coef,
                                             const int* direction, int maxSfb, int profile,
                                             int samplingRateIndex, int winLen) {
    return shapeNoise(TnsSense::encode, srcDst,
                      {numFilt, regionLen, order, coefRes, coef, direction, 0, {}, winLen, 0}, maxSfb,
                      profile, samplingRateIndex);
}

extern "C" ZorStatus zorsDecodeTNS_AAC_32f_I(Zor32f* srcDst, const int* numFilt, const int* regionLen,
                                             const int* order, const int* coefRes, const Zor8s* coef,
                                             const int* direction, int maxSfb, int profile,
                                             int samplingRateIndex, int winLen) {
    return shapeNoise(TnsSense::decode, srcDst,
                      {numFilt, regionLen, order, coefRes, coef, direction, 0, {}, winLen, 0}, maxSfb,
                      profile, samplingRateIndex);
}

extern "C" ZorStatus zorsEncodeTNS_AAC_32f_I(Zor32f* srcDst, const int* numFilt, const int* regionLen,
                                             const int* order, const int* coefRes, const Zor8s* coef,
                                             const int* direction, int maxSfb, int profile,
                                             int samplingRateIndex, int winLen) {
    return shapeNoise(TnsSense::encode, srcDst,
                      {numFilt, regionLen, order, coefRes, coef, direction, 0, {}, winLen, 0}, maxSfb,
                      profile, samplingRateIndex);
}
