#include "transform/fft.h"

#include <cmath>
#include <initializer_list>
#include <numbers>

namespace zor {

namespace {

/** The radix of the next pass: the large ones first, since the first pass has the shortest runs. */
int nextRadix(int rest) {
    if (rest % 8 == 0 && rest != 16)
        return 8;
    for (const int radix : {4, 5, 3, 2})
        if (rest % radix == 0)
            return radix;
    return 0;
}

void fillTwiddles(float* twiddle, int radix, int blocks) {
    const double step = -2 * std::numbers::pi / (static_cast<double>(radix) * blocks);
    for (int k = 1; k < radix; ++k)
        for (int p = 0; p < blocks; ++p) {
            const double angle = step * k * p;
            twiddle[2 * (k - 1) * blocks + p] = static_cast<float>(std::cos(angle));
            twiddle[(2 * (k - 1) + 1) * blocks + p] = static_cast<float>(std::sin(angle));
        }
}

} // namespace

bool isFftSize(int n) {
    if (n < 1)
        return false;
    for (const int prime : {2, 3, 5})
        while (n % prime == 0)
            n /= prime;
    return n == 1;
}

void placeFft(FftPlan& plan, int n, Arena& arena) {
    plan = {n, 0, {}};
    for (int rest = n, stride = 1; rest > 1;) {
        const int radix = nextRadix(rest), blocks = rest / radix;
        float* twiddle = nullptr;
        if (blocks > 1) {
            twiddle = arena.take<float>(static_cast<std::size_t>(2 * (radix - 1) * blocks));
            if (twiddle)
                fillTwiddles(twiddle, radix, blocks);
        }
        plan.pass[plan.passes++] = {radix, blocks, stride, twiddle};
        rest = blocks;
        stride *= radix;
    }
}

} // namespace zor
