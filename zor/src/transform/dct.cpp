#include "transform/dct.h"

#include <cmath>
#include <numbers>

namespace zor {

void placeDct4(Dct4Plan& plan, int n, double scale, Arena& arena) {
    const int half = n / 2;
    plan.size = n;
    placeFft(plan.fft, half, arena);
    float* tables = arena.take<float>(static_cast<std::size_t>(2 * splitFloats(half)));
    if (!tables)
        return;
    plan.before = splitOver(tables, half);
    plan.after = splitOver(tables + splitFloats(half), half);
    for (int i = 0; i < half; ++i) {
        const double angle = -std::numbers::pi / n * (i + 0.125);
        plan.before.re[i] = static_cast<float>(std::cos(angle));
        plan.before.im[i] = static_cast<float>(std::sin(angle));
        plan.after.re[i] = static_cast<float>(scale * std::cos(angle));
        plan.after.im[i] = static_cast<float>(scale * std::sin(angle));
    }
}

} // namespace zor
