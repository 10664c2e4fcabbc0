#include "ac/aac_mdct_kernels.h"
#include "ac/fixedpoint.h"

#include <bit>
#include <utility>

namespace zor::aac {
namespace {

constexpr Zor64u half31 = Zor64u{1} << 30;

int bitsOf(const Zor32s* values, int count) {
    Zor32u all = 0;
    for (int i = 0; i < count; ++i)
        all |= static_cast<Zor32u>(values[i] ^ (values[i] >> 31));
    return static_cast<int>(std::bit_width(all));
}

/**
 * A factor of 2^norm at a product with a number of 31 fractional bits: shorter shifts of the product for
 * norms above 0; for those below, shifts of the factor before.
 */
struct Shifts {
    int before, after;
    Zor64u half;

    explicit Shifts(int norm)
        : before(std::max(-norm, 0)), after(31 - std::max(norm, 0)), half(Zor64u{1} << (after - 1)) {}
    Zor32s operator()(Zor64s sum) const { return shifted(sum, half, after); }
};

void foldWindowed(const Zor32s* __restrict first, const Zor32s* __restrict second,
                  const Zor32s* __restrict rise, const Zor32s* __restrict fall, Zor32s* __restrict folded,
                  int length, int norm) {
    const int middle = length / 2;
    const Shifts shifts(norm);
    for (int n = 0; n < middle; ++n) {
        const int up = middle + n, down = middle - 1 - n;
        folded[n] = shifts(-product(second[down] >> shifts.before, fall[down]) -
                           product(second[up] >> shifts.before, fall[up]));
    }
    for (int n = 0; n < middle; ++n) {
        const int down = length - 1 - n;
        folded[middle + n] = shifts(product(first[n] >> shifts.before, rise[n]) -
                                    product(first[down] >> shifts.before, rise[down]));
    }
}

/** Four quarters of a complex vector; the real and imaginary parts apart. */
struct Complex {
    const Zor32s* re;
    const Zor32s* im;
};

/** The sums and differences of a radix-4 butterfly, four times the mean. */
struct Butterfly {
    Zor32s re[4], im[4];

    Butterfly(Complex x, int at, int step) {
        const Zor32s ar = x.re[at], br = x.re[at + step], cr = x.re[at + 2 * step], dr = x.re[at + 3 * step];
        const Zor32s ai = x.im[at], bi = x.im[at + step], ci = x.im[at + 2 * step], di = x.im[at + 3 * step];
        re[0] = ar + cr + (br + dr);
        im[0] = ai + ci + (bi + di);
        re[1] = ar - cr + (bi - di);
        im[1] = ai - ci - (br - dr);
        re[2] = ar + cr - (br + dr);
        im[2] = ai + ci - (bi + di);
        re[3] = ar - cr - (bi - di);
        im[3] = ai - ci + (br - dr);
    }
};

/** A quarter of the product with a rotation of 30 bits: the mean again, which is the upper half of the sum.
 */
inline Zor32s quarterRe(Zor32s re, Zor32s im, Zor32s c, Zor32s s) {
    return shifted(product(re, c) - product(im, s), Zor64u{1} << 31, 32);
}
inline Zor32s quarterIm(Zor32s re, Zor32s im, Zor32s c, Zor32s s) {
    return shifted(product(re, s) + product(im, c), Zor64u{1} << 31, 32);
}

/** The first stage of a self-sorting transform: neighbouring butterflies have neighbouring inputs. */
void firstStage(Complex x, Zor32s* __restrict yr, Zor32s* __restrict yi, const Rotations* w, int quarter) {
    const Zor32s *c1 = w[0].re, *s1 = w[0].im, *c2 = w[1].re, *s2 = w[1].im, *c3 = w[2].re, *s3 = w[2].im;
    for (int p = 0; p < quarter; ++p) {
        const Butterfly b(x, p, quarter);
        yr[4 * p] = (b.re[0] + 2) >> 2;
        yi[4 * p] = (b.im[0] + 2) >> 2;
        yr[4 * p + 1] = quarterRe(b.re[1], b.im[1], c1[p], s1[p]);
        yi[4 * p + 1] = quarterIm(b.re[1], b.im[1], c1[p], s1[p]);
        yr[4 * p + 2] = quarterRe(b.re[2], b.im[2], c2[p], s2[p]);
        yi[4 * p + 2] = quarterIm(b.re[2], b.im[2], c2[p], s2[p]);
        yr[4 * p + 3] = quarterRe(b.re[3], b.im[3], c3[p], s3[p]);
        yi[4 * p + 3] = quarterIm(b.re[3], b.im[3], c3[p], s3[p]);
    }
}

/** A further stage: `stride` neighbouring butterflies share their rotations. */
template <int stride>
void laterStage(Complex x, Zor32s* __restrict yr, Zor32s* __restrict yi, const Rotations* w, int quarter) {
    for (int p = 0; p < quarter; ++p) {
        const Zor32s c1 = w[0].re[p], s1 = w[0].im[p], c2 = w[1].re[p], s2 = w[1].im[p], c3 = w[2].re[p],
                     s3 = w[2].im[p];
        Zor32s* toRe = yr + 4 * stride * p;
        Zor32s* toIm = yi + 4 * stride * p;
        for (int q = 0; q < stride; ++q) {
            const Butterfly b(x, stride * p + q, stride * quarter);
            toRe[q] = (b.re[0] + 2) >> 2;
            toIm[q] = (b.im[0] + 2) >> 2;
            toRe[q + stride] = quarterRe(b.re[1], b.im[1], c1, s1);
            toIm[q + stride] = quarterIm(b.re[1], b.im[1], c1, s1);
            toRe[q + 2 * stride] = quarterRe(b.re[2], b.im[2], c2, s2);
            toIm[q + 2 * stride] = quarterIm(b.re[2], b.im[2], c2, s2);
            toRe[q + 3 * stride] = quarterRe(b.re[3], b.im[3], c3, s3);
            toIm[q + 3 * stride] = quarterIm(b.re[3], b.im[3], c3, s3);
        }
    }
}

void radix2Stage(Complex x, Zor32s* __restrict yr, Zor32s* __restrict yi, int middle) {
    for (int q = 0; q < middle; ++q) {
        yr[q] = (x.re[q] + x.re[q + middle] + 1) >> 1;
        yi[q] = (x.im[q] + x.im[q + middle] + 1) >> 1;
        yr[q + middle] = (x.re[q] - x.re[q + middle] + 1) >> 1;
        yi[q + middle] = (x.im[q] - x.im[q + middle] + 1) >> 1;
    }
}

/** A complex vector of n points at `work`: the real parts, then the imaginary ones. */
struct Buffer {
    Zor32s* re;
    Zor32s* im;

    Buffer(Zor32s* work, int n) : re(work), im(work + n) {}
    operator Complex() const { return {re, im}; }
};

/** The Fourier transform of n points over n, by turns in two buffers; returns the one with the result. */
Buffer fourier(const Dct4Plan& plan, Buffer from, Buffer to, int n) {
    static constexpr decltype(&firstStage) stages[Dct4Plan::maxStages] = {firstStage, laterStage<4>,
                                                                          laterStage<16>, laterStage<64>};
    int quarter = n / 4;
    for (int stage = 0; stage < plan.stages; ++stage, quarter /= 4) {
        stages[stage](from, to.re, to.im, plan.stage[stage], quarter);
        std::swap(from, to);
    }
    if (plan.radix2) {
        radix2Stage(from, to.re, to.im, n / 2);
        std::swap(from, to);
    }
    return from;
}

void rotateIn(const Zor32s* __restrict in, Rotations w, Zor32s* __restrict re, Zor32s* __restrict im, int n,
              int norm) {
    const Shifts shifts(norm);
    for (int i = 0; i < n; ++i) {
        const Zor32s even = in[2 * i] >> shifts.before, odd = in[2 * n - 1 - 2 * i] >> shifts.before;
        re[i] = shifts(product(even, w.re[i]) - product(odd, w.im[i]));
        im[i] = shifts(product(even, w.im[i]) + product(odd, w.re[i]));
    }
}

void rotateOut(Complex x, Rotations w, Zor32s* __restrict out, int n, int shift) {
    const Zor64u round = roundingBias(shift);
    for (int i = 0; i < n; ++i) {
        out[2 * i] = narrow(product(x.re[i], w.re[i]) - product(x.im[i], w.im[i]), round, shift);
        out[2 * n - 1 - 2 * i] = narrow(-product(x.re[i], w.im[i]) - product(x.im[i], w.re[i]), round, shift);
    }
}

void dct4(const Dct4Plan& plan, const Zor32s* in, int norm, Zor32s* out, int shift, Zor32s* work) {
    const int n = plan.length / 2;
    const Buffer first(work, n), second(work + 2 * n, n);
    rotateIn(in, plan.ends, first.re, first.im, n, norm);
    rotateOut(fourier(plan, first, second, n), plan.ends, out, n, shift);
}

inline Zor32s windowed(Zor32s value, Zor32s window) {
    return shifted(product(value, window), half31, 31);
}
inline Zor32s negated(Zor32s value, Zor32s window) {
    return shifted(-product(value, window), half31, 31);
}

void addUnfolded(const Zor32s* __restrict u, const Zor32s* __restrict rise, const Zor32s* __restrict fall,
                 Zor32s* __restrict sum, int length) {
    const int middle = length / 2;
    for (int n = 0; n < middle; ++n) {
        sum[n] = saturatingAdd(sum[n], windowed(u[middle + n], rise[n]));
        sum[middle + n] = saturatingAdd(sum[middle + n], negated(u[length - 1 - n], rise[middle + n]));
    }
    for (int n = 0; n < middle; ++n) {
        sum[length + n] = saturatingAdd(sum[length + n], negated(u[middle - 1 - n], fall[n]));
        sum[length + middle + n] = saturatingAdd(sum[length + middle + n], negated(u[n], fall[middle + n]));
    }
}

inline Zor16s sample(Zor32s sum) {
    const Zor32s value = (sum >> overlapBits) + ((sum >> (overlapBits - 1)) & 1);
    return static_cast<Zor16s>(std::max(std::min(value, 32767), -32768));
}

void overlapUnfolded(const Zor32s* __restrict u, const Zor32s* __restrict rise, const Zor32s* __restrict fall,
                     Zor32s* __restrict overlap, Zor16s* __restrict out, int length) {
    const int middle = length / 2;
    for (int n = 0; n < middle; ++n)
        out[n] = sample(saturatingAdd(overlap[n], windowed(u[middle + n], rise[n])));
    for (int n = 0; n < middle; ++n)
        out[middle + n] =
            sample(saturatingAdd(overlap[middle + n], negated(u[length - 1 - n], rise[middle + n])));
    for (int n = 0; n < middle; ++n)
        overlap[n] = negated(u[middle - 1 - n], fall[n]);
    for (int n = 0; n < middle; ++n)
        overlap[middle + n] = negated(u[n], fall[middle + n]);
}

void toSamples(const Zor32s* __restrict sum, Zor16s* __restrict out, int count) {
    for (int i = 0; i < count; ++i)
        out[i] = sample(sum[i]);
}

} // namespace
} // namespace zor::aac

template <>
const zor::aac::AacMdctKernels& zor::kernelTable<zor::aac::AacMdctKernels, ZOR_PATH>() {
    static constexpr aac::AacMdctKernels table{.bitsOf = aac::bitsOf,
                                               .foldWindowed = aac::foldWindowed,
                                               .dct4 = aac::dct4,
                                               .addUnfolded = aac::addUnfolded,
                                               .overlapUnfolded = aac::overlapUnfolded,
                                               .toSamples = aac::toSamples};
    return table;
}
