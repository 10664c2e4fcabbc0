#include "aac/mdct_float_kernels.h"

#include "common/simd.h"

namespace zor::aac {
namespace {

using V = Lanes<maxLanes>;
constexpr int lanes = lanesIn<V>;

/** The lanes before `end`, from the last to the first. */
[[gnu::always_inline]] inline V loadReversed(const float* end) {
    return reversed(load<V>(end - lanes));
}

void foldWindowed(const float* first, const float* second, const float* rise, const float* fall,
                  float* folded, int length) {
    const int middle = length / 2;
    for (int n = 0; n < middle; n += lanes) {
        store<V>(folded + n, -loadReversed(second + middle - n) * loadReversed(fall + middle - n) -
                                 load<V>(second + middle + n) * load<V>(fall + middle + n));
        store<V>(folded + middle + n, load<V>(first + n) * load<V>(rise + n) -
                                          loadReversed(first + length - n) * loadReversed(rise + length - n));
    }
}

/**
 * Hands the unfolded samples to first(n, samples) and second(n, samples), which take those of either half:
 * the halves of u being a and b, they are b, -b reversed; -a reversed, -a.
 */
template <class First, class Second>
[[gnu::always_inline]] inline void unfold(const float* u, int length, First first, Second second) {
    const int middle = length / 2;
    for (int n = 0; n < middle; n += lanes) {
        first(n, load<V>(u + middle + n));
        first(middle + n, -loadReversed(u + length - n));
        second(n, -loadReversed(u + middle - n));
        second(middle + n, -load<V>(u + n));
    }
}

void overlapUnfolded(const float* u, const float* rise, const float* fall, float* overlap, float* out,
                     int length) {
    unfold(
        u, length,
        [&](int n, V samples) __attribute__((always_inline)) {
            store<V>(out + n, load<V>(overlap + n) + samples * load<V>(rise + n));
        },
        [&](int n, V samples) __attribute__((always_inline)) {
            // The overlap of this place has been taken: the first half is ahead of the second in each step.
            store<V>(overlap + n, samples * load<V>(fall + n));
        });
}

void addUnfolded(const float* u, const float* rise, const float* fall, float* sum, int length) {
    const auto add = [](float* to, V samples, const float* window) __attribute__((always_inline)) {
        store<V>(to, load<V>(to) + samples * load<V>(window));
    };
    unfold(
        u, length, [&](int n, V samples) __attribute__((always_inline)) { add(sum + n, samples, rise + n); },
        [&](int n, V samples) __attribute__((always_inline)) { add(sum + length + n, samples, fall + n); });
}

} // namespace
} // namespace zor::aac

template <>
const zor::aac::AacFloatMdctKernels& zor::kernelTable<zor::aac::AacFloatMdctKernels, ZOR_PATH>() {
    static constexpr aac::AacFloatMdctKernels table{.foldWindowed = aac::foldWindowed,
                                                    .overlapUnfolded = aac::overlapUnfolded,
                                                    .addUnfolded = aac::addUnfolded};
    return table;
}
