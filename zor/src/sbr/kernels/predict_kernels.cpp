// SBR prediction coefficients: vector lanes are neighbouring bands, the sums run over the slots.
#include "sbr/predict.h"
#include "transform/kernels/complex.h"

namespace {

using zor::Complex;
using zor::lanesIn;
using zor::load;
using zor::predictPast;
using zor::splat;
using zor::store;

/** 1 / (1 + 1e-6) of the standard, and the magnitude at which coefficients are given up. */
constexpr float relaxation = 1 / (1 + 1e-6f), limit = 4;

/** Real numbers in lanes, with the operations that the solution needs of complex ones. */
template <class V>
struct Real {
    V re;
    [[gnu::always_inline]] friend inline Real operator+(Real a, Real b) { return {a.re + b.re}; }
    [[gnu::always_inline]] friend inline Real operator-(Real a, Real b) { return {a.re - b.re}; }
    [[gnu::always_inline]] friend inline Real operator*(Real a, Real b) { return {a.re * b.re}; }
};

template <class V>
[[gnu::always_inline]] inline V norm(Real<V> a) {
    return a.re * a.re;
}
template <class V>
[[gnu::always_inline]] inline V norm(Complex<V> a) {
    return a.re * a.re + a.im * a.im;
}

/** a conj(b) */
template <class V>
[[gnu::always_inline]] inline Real<V> timesConjugate(Real<V> a, Real<V> b) {
    return a * b;
}
template <class V>
[[gnu::always_inline]] inline Complex<V> timesConjugate(Complex<V> a, Complex<V> b) {
    return {a.re * b.re + a.im * b.im, a.im * b.re - a.re * b.im};
}

template <class V>
[[gnu::always_inline]] inline Real<V> scaled(Real<V> a, V factor) {
    return {a.re * factor};
}
template <class V>
[[gnu::always_inline]] inline Complex<V> scaled(Complex<V> a, V factor) {
    return {a.re * factor, a.im * factor};
}

/** The value in the lanes of the mask, 0 in the others, whatever stands there. */
template <class V, class Mask>
[[gnu::always_inline]] inline Real<V> kept(Real<V> a, Mask mask) {
    return {mask ? a.re : V{}};
}
template <class V, class Mask>
[[gnu::always_inline]] inline Complex<V> kept(Complex<V> a, Mask mask) {
    return {mask ? a.re : V{}, mask ? a.im : V{}};
}

/** The covariances phi(i, j), sums of x[n-i] conj(x[n-j]). */
template <template <class> class Number, class V>
struct Covariance {
    V phi11{}, phi22{};
    Number<V> phi01{}, phi02{}, phi12{};

    [[gnu::always_inline]] void add(Number<V> x0, Number<V> x1, Number<V> x2) {
        phi11 += norm(x1);
        phi22 += norm(x2);
        phi01 = phi01 + timesConjugate(x0, x1);
        phi02 = phi02 + timesConjugate(x0, x2);
        phi12 = phi12 + timesConjugate(x1, x2);
    }
};

/** 1 / v, but 0 in the lanes where v is 0. */
template <class V>
[[gnu::always_inline]] inline V inverseOrZero(V v) {
    const V zero{}, one = splat<V>(1);
    return (v == zero ? zero : one) / (v == zero ? one : v);
}

template <template <class> class Number, class V>
struct Coefficients {
    Number<V> alpha0, alpha1;

    [[gnu::always_inline]] explicit Coefficients(const Covariance<Number, V>& c) {
        const V determinant = c.phi22 * c.phi11 - norm(c.phi12) * splat<V>(relaxation);
        alpha1 = scaled(c.phi01 * c.phi12 - scaled(c.phi02, c.phi11), inverseOrZero(determinant));
        alpha0 = scaled(c.phi01 + timesConjugate(alpha1, c.phi12), -inverseOrZero(c.phi11));
        const V square = splat<V>(limit * limit);
        // Not a number counts as too large.
        const V norm0 = norm(alpha0), norm1 = norm(alpha1), larger = norm0 < square ? norm1 : square;
        const auto mask = larger < square;
        alpha0 = kept(alpha0, mask);
        alpha1 = kept(alpha1, mask);
    }
};

/** The coefficients of the bands from `band` on. */
template <class V, class Lines>
[[gnu::always_inline]] inline void solve(const Lines& lines, int band, int length) {
    auto x2 = lines.template read<V>(0, band), x1 = lines.template read<V>(1, band);
    Covariance<Lines::template Number, V> sums;
    for (int slot = predictPast; slot < length + predictPast; ++slot) {
        const auto x0 = lines.template read<V>(slot, band);
        sums.add(x0, x1, x2);
        x2 = x1;
        x1 = x0;
    }
    lines.write(band, Coefficients<Lines::template Number, V>(sums));
}

/** All bands: whole vectors, then the rest one by one. */
template <class Lines>
void predict(const Lines& lines, int bands, int length) {
    using V = zor::Lanes<zor::maxLanes>;
    int band = 0;
    for (; band + lanesIn<V> <= bands; band += lanesIn<V>)
        solve<V>(lines, band, length);
    for (; band < bands; ++band)
        solve<float>(lines, band, length);
}

struct RealLines {
    template <class V>
    using Number = Real<V>;

    const float* const* src;
    float *alpha0, *alpha1;
    template <class V>
    Real<V> read(int slot, int band) const {
        return {load<V>(src[slot] + band)};
    }
    template <class V>
    void write(int band, const Coefficients<Number, V>& c) const {
        store(alpha0 + band, c.alpha0.re);
        store(alpha1 + band, c.alpha1.re);
    }
};

struct SplitLines {
    template <class V>
    using Number = Complex<V>;

    const float *const *re, *const *im;
    float *alpha0Re, *alpha0Im, *alpha1Re, *alpha1Im;
    template <class V>
    Complex<V> read(int slot, int band) const {
        return {load<V>(re[slot] + band), load<V>(im[slot] + band)};
    }
    template <class V>
    void write(int band, const Coefficients<Number, V>& c) const {
        store(alpha0Re + band, c.alpha0.re);
        store(alpha0Im + band, c.alpha0.im);
        store(alpha1Re + band, c.alpha1.re);
        store(alpha1Im + band, c.alpha1.im);
    }
};

struct PairLines {
    template <class V>
    using Number = Complex<V>;

    const Zor32fc* const* src;
    Zor32fc *alpha0, *alpha1;
    template <class V>
    Complex<V> read(int slot, int band) const {
        Complex<V> x;
        zor::loadPairs(&src[slot][band].re, x.re, x.im);
        return x;
    }
    template <class V>
    void write(int band, const Coefficients<Number, V>& c) const {
        zor::storePairs(&alpha0[band].re, c.alpha0.re, c.alpha0.im);
        zor::storePairs(&alpha1[band].re, c.alpha1.re, c.alpha1.im);
    }
};

void real(const float* const* src, float* alpha0, float* alpha1, int bands, int length) {
    predict(RealLines{src, alpha0, alpha1}, bands, length);
}

void split(const float* const* re, const float* const* im, float* alpha0Re, float* alpha0Im, float* alpha1Re,
           float* alpha1Im, int bands, int length) {
    predict(SplitLines{re, im, alpha0Re, alpha0Im, alpha1Re, alpha1Im}, bands, length);
}

void pairs(const Zor32fc* const* src, Zor32fc* alpha0, Zor32fc* alpha1, int bands, int length) {
    predict(PairLines{src, alpha0, alpha1}, bands, length);
}

} // namespace

template <>
const zor::PredictKernels& zor::kernelTable<zor::PredictKernels, ZOR_PATH>() {
    static constexpr PredictKernels table{.real = real, .split = split, .pairs = pairs};
    return table;
}
