// DTS synthesis: one slot of 32 bands.
#include "common/simd.h"
#include "dts/filter.h"

#include <array>

namespace {

using zor::DtsSynthesis;
using zor::lanesIn;
using zor::load;
using zor::reversed;
using zor::store;
using V = zor::Lanes<zor::maxLanes>;

constexpr std::size_t lanes = lanesIn<V>, bands = DtsSynthesis::bands, half = bands / 2;

/** s[k]: the sign of the standard's modulation in band k. */
constexpr auto modulationSign = [] {
    std::array<float, bands> sign{};
    for (std::size_t k = 0; k < bands; ++k)
        sign[k] = (k + 1) & 2 ? -1.0f : 1.0f;
    return sign;
}();

/** The 64 values of a slot from the 32 of the cosine transform: c1, -c1_r, -c0_r, -c0 with its halves c0 c1.
 */
void spread(const float* cosines, float* values) {
    for (std::size_t j = 0; j < half; j += lanes) {
        const std::size_t mirrored = half - lanes - j;
        const V low = load<V>(cosines + j), high = load<V>(cosines + half + j);
        store<V>(values + j, high);
        store<V>(values + half + mirrored, -reversed(high));
        store<V>(values + 2 * half + mirrored, -reversed(low));
        store<V>(values + 3 * half + j, -low);
    }
}

void overlap(const DtsSynthesis& filter, const float* window, float* dst) {
    const float* slots[DtsSynthesis::ringSlots];
    for (int age = 0; age < DtsSynthesis::ringSlots; ++age) {
        const int slot = (filter.newest - age) & (DtsSynthesis::ringSlots - 1);
        slots[age] = filter.ring + static_cast<std::size_t>(slot) * 2 * bands + (age % 2 ? bands : 0);
    }
    for (std::size_t j = 0; j < bands; j += lanes) {
        V even{}, odd{};
        for (std::size_t age = 0; age < DtsSynthesis::ringSlots; age += 2) {
            even += load<V>(window + age * bands + j) * load<V>(slots[age] + j);
            odd += load<V>(window + (age + 1) * bands + j) * load<V>(slots[age + 1] + j);
        }
        store<V>(dst + j, even + odd);
    }
}

void synthesise(DtsSynthesis& filter, const float* src, float* dst, int mode) {
    float samples[bands], cosines[bands];
    for (std::size_t k = 0; k < bands; k += lanes)
        store<V>(samples + k, load<V>(src + k) * load<V>(modulationSign.data() + k));
    zor::kernelTable<zor::DctKernels, ZOR_PATH>().dct4(filter.plan, samples, cosines, filter.work);
    filter.newest = (filter.newest + 1) & (DtsSynthesis::ringSlots - 1);
    spread(cosines, filter.ring + static_cast<std::size_t>(filter.newest) * 2 * bands);
    overlap(filter, filter.window[mode], dst);
}

} // namespace

template <>
const zor::DtsKernels& zor::kernelTable<zor::DtsKernels, ZOR_PATH>() {
    static constexpr DtsKernels table{.synthesise = synthesise};
    return table;
}
