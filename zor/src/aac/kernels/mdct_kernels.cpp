#include "aac/mdct_kernels.h"

#include "aac/fixedpoint.h"

#include <bit>
#include <utility>

namespace zor::aac {
namespace {

constexpr Zor64u half31 = Zor64u{1} << 30;
constexpr int maxLength = 1024;

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

/** One output of a butterfly: a quarter of the product with a rotation of 30 bits, the upper half of the sum.
 */
inline Zor32s quarterRe(Zor32s re, Zor32s im, Zor32s c, Zor32s s) {
    return shifted(product(re, c) - product(im, s), Zor64u{1} << 31, 32);
}
inline Zor32s quarterIm(Zor32s re, Zor32s im, Zor32s c, Zor32s s) {
    return shifted(product(re, s) + product(im, c), Zor64u{1} << 31, 32);
}

/** The rotations of the second, third and fourth output. */
struct Twiddles {
    Zor32s c1, s1, c2, s2, c3, s3;
};

/** Radix 4 with the mean in place of the sum: inputs `in` apart from x on, outputs `out` apart from y on. */
inline void butterfly(const Zor32s* __restrict xr, const Zor32s* __restrict xi, int in, Zor32s* __restrict yr,
                      Zor32s* __restrict yi, int out, const Twiddles& w) {
    const Zor32s sumRe = xr[0] + xr[2 * in], difRe = xr[0] - xr[2 * in];
    const Zor32s sumIm = xi[0] + xi[2 * in], difIm = xi[0] - xi[2 * in];
    const Zor32s oddRe = xr[in] + xr[3 * in], turnRe = xr[in] - xr[3 * in];
    const Zor32s oddIm = xi[in] + xi[3 * in], turnIm = xi[in] - xi[3 * in];
    yr[0] = (sumRe + oddRe + 2) >> 2;
    yi[0] = (sumIm + oddIm + 2) >> 2;
    yr[out] = quarterRe(difRe + turnIm, difIm - turnRe, w.c1, w.s1);
    yi[out] = quarterIm(difRe + turnIm, difIm - turnRe, w.c1, w.s1);
    yr[2 * out] = quarterRe(sumRe - oddRe, sumIm - oddIm, w.c2, w.s2);
    yi[2 * out] = quarterIm(sumRe - oddRe, sumIm - oddIm, w.c2, w.s2);
    yr[3 * out] = quarterRe(difRe - turnIm, difIm + turnRe, w.c3, w.s3);
    yi[3 * out] = quarterIm(difRe - turnIm, difIm + turnRe, w.c3, w.s3);
}

using Stage = void (*)(const Zor32s*, const Zor32s*, Zor32s*, Zor32s*, const Rotations*, int);

/** The rotations of a stage, output by output. */
struct StageTwiddles {
    const Zor32s *c1, *s1, *c2, *s2, *c3, *s3;

    explicit StageTwiddles(const Rotations* w)
        : c1(w[0].re), s1(w[0].im), c2(w[1].re), s2(w[1].im), c3(w[2].re), s3(w[2].im) {}
};

/**
 * An early stage of a self-sorting transform, whose outputs lie close together: a block of butterflies is
 * worked out in rows, which vector units like, and then sorted. The rotations stand `stride` times each.
 */
template <int stride>
void earlyStage(const Zor32s* __restrict xr, const Zor32s* __restrict xi, Zor32s* __restrict yr,
                Zor32s* __restrict yi, const Rotations* rotations, int quarter) {
    constexpr int block = 16;
    alignas(64) Zor32s re[4 * block], im[4 * block];
    const StageTwiddles w(rotations);
    const int count = stride * quarter;
    for (int first = 0; first < count; first += block) {
        for (int i = 0, j = first; i < block; ++i, ++j)
            butterfly(xr + j, xi + j, count, re + i, im + i, block,
                      {w.c1[j], w.s1[j], w.c2[j], w.s2[j], w.c3[j], w.s3[j]});
        for (int p = 0; p < block; p += stride)
            for (int row = 0; row < 4; ++row)
                for (int q = 0; q < stride; ++q) {
                    yr[4 * (first + p) + stride * row + q] = re[block * row + p + q];
                    yi[4 * (first + p) + stride * row + q] = im[block * row + p + q];
                }
    }
}

/** A later stage: `stride` neighbouring butterflies share their rotations. */
template <int stride>
void laterStage(const Zor32s* __restrict xr, const Zor32s* __restrict xi, Zor32s* __restrict yr,
                Zor32s* __restrict yi, const Rotations* rotations, int quarter) {
    const StageTwiddles w(rotations);
    const int in = stride * quarter;
    for (int p = 0; p < quarter; ++p) {
        const Twiddles turns{w.c1[p], w.s1[p], w.c2[p], w.s2[p], w.c3[p], w.s3[p]};
        for (int q = 0; q < stride; ++q)
            butterfly(xr + stride * p + q, xi + stride * p + q, in, yr + 4 * stride * p + q,
                      yi + 4 * stride * p + q, stride, turns);
    }
}

/** The last stage where one of radix 2 is left: the means and half the differences of the two halves. */
void radix2Stage(const Zor32s* __restrict x, Zor32s* __restrict y, int middle) {
    for (int q = 0; q < middle; ++q) {
        y[q] = (x[q] + x[q + middle] + 1) >> 1;
        y[q + middle] = (x[q] - x[q + middle] + 1) >> 1;
    }
}

/** A complex vector of n points at `work`: the real parts, then the imaginary ones. */
struct Buffer {
    Zor32s* re;
    Zor32s* im;

    Buffer(Zor32s* work, int n) : re(work), im(work + n) {}
};

/** The Fourier transform of n points over n, by turns in two buffers; returns the one with the result. */
Buffer fourier(const Dct4Plan& plan, Buffer from, Buffer to, int n) {
    static constexpr Stage stages[Dct4Plan::maxStages] = {earlyStage<1>, earlyStage<4>, laterStage<16>,
                                                          laterStage<64>};
    int quarter = n / 4;
    for (int stage = 0; stage < plan.stages; ++stage, quarter /= 4) {
        stages[stage](from.re, from.im, to.re, to.im, plan.stage[stage], quarter);
        std::swap(from, to);
    }
    if (plan.radix2) {
        radix2Stage(from.re, to.re, n / 2);
        radix2Stage(from.im, to.im, n / 2);
        std::swap(from, to);
    }
    return from;
}

constexpr int rotateBlock = 16;

void rotateIn(const Zor32s* __restrict in, Rotations w, Zor32s* __restrict re, Zor32s* __restrict im, int n,
              int norm) {
    const Shifts shifts(norm);
    for (int first = 0; first < n; first += rotateBlock) {
        alignas(64) Zor32s even[rotateBlock], odd[rotateBlock];
        for (int i = 0; i < rotateBlock; ++i) {
            even[i] = in[2 * (first + i)] >> shifts.before;
            odd[i] = in[2 * (n - first - i) - 1] >> shifts.before;
        }
        for (int i = 0, j = first; i < rotateBlock; ++i, ++j) {
            re[j] = shifts(product(even[i], w.re[j]) - product(odd[i], w.im[j]));
            im[j] = shifts(product(even[i], w.im[j]) + product(odd[i], w.re[j]));
        }
    }
}

/** A factor of 2^-shift for numbers below 2^30, rounded, or 2^shift, saturated to a multiple of it. */
struct Scale {
    int left, right;
    Zor32s limit, half;

    explicit Scale(int shift)
        : left(std::max(-shift, 0)), right(std::max(shift, 0)), limit(most32 >> left),
          half(static_cast<Zor32s>((Zor32u{1} << right) >> 1)) {}
    Zor32s operator()(Zor32s value) const {
        const Zor32s limited = std::max(std::min(value, limit), -limit);
        return ((limited * (1 << left)) + half) >> right;
    }
};

void rotateOut(const Zor32s* __restrict re, const Zor32s* __restrict im, Rotations w, Zor32s* __restrict out,
               int n, int shift) {
    const Scale scale(shift - 31);
    for (int first = 0; first < n; first += rotateBlock) {
        alignas(64) Zor32s even[rotateBlock], odd[rotateBlock];
        for (int i = 0, j = first; i < rotateBlock; ++i, ++j) {
            even[i] = scale(shifted(product(re[j], w.re[j]) - product(im[j], w.im[j]), half31, 31));
            odd[i] = scale(shifted(-product(re[j], w.im[j]) - product(im[j], w.re[j]), half31, 31));
        }
        for (int i = 0; i < rotateBlock; ++i) {
            out[2 * (first + i)] = even[i];
            out[2 * (n - first - i) - 1] = odd[i];
        }
    }
}

void dct4(const Dct4Plan& plan, const Zor32s* in, int norm, Zor32s* out, int shift, Zor32s* work) {
    const int n = plan.length / 2;
    const Buffer first(work, n), second(work + 2 * n, n);
    rotateIn(in, plan.ends, first.re, first.im, n, norm);
    const Buffer result = fourier(plan, first, second, n);
    rotateOut(result.re, result.im, plan.ends, out, n, shift);
}

inline Zor32s windowed(Zor32s value, Zor32s window) {
    return shifted(product(value, window), half31, 31);
}
/** The 2M samples that M values of a DCT-IV stand for. */
void unfold(const Zor32s* __restrict u, Zor32s* __restrict samples, int length) {
    const int middle = length / 2;
    for (int n = 0; n < middle; ++n)
        samples[n] = u[middle + n];
    for (int n = 0; n < length; ++n)
        samples[middle + n] = -u[length - 1 - n];
    for (int n = 0; n < middle; ++n)
        samples[length + middle + n] = -u[n];
}

void addUnfolded(const Zor32s* u, const Zor32s* __restrict rise, const Zor32s* __restrict fall,
                 Zor32s* __restrict sum, int length) {
    alignas(64) Zor32s samples[2 * maxLength];
    unfold(u, samples, length);
    for (int n = 0; n < length; ++n)
        sum[n] = saturatingAdd(sum[n], windowed(samples[n], rise[n]));
    for (int n = 0; n < length; ++n)
        sum[length + n] = saturatingAdd(sum[length + n], windowed(samples[length + n], fall[n]));
}

inline Zor16s sample(Zor32s sum) {
    const Zor32s value = (sum >> overlapBits) + ((sum >> (overlapBits - 1)) & 1);
    return static_cast<Zor16s>(std::max(std::min(value, 32767), -32768));
}

void overlapUnfolded(const Zor32s* u, const Zor32s* __restrict rise, const Zor32s* __restrict fall,
                     Zor32s* __restrict overlap, Zor16s* __restrict out, int length) {
    alignas(64) Zor32s samples[2 * maxLength];
    unfold(u, samples, length);
    for (int n = 0; n < length; ++n)
        out[n] = sample(saturatingAdd(overlap[n], windowed(samples[n], rise[n])));
    for (int n = 0; n < length; ++n)
        overlap[n] = windowed(samples[length + n], fall[n]);
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
