#include "kvelements.h"

#include "data/bxrandomdata.h"
#include "kvvector.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kv {

namespace {

constexpr double defaultFloat = 1.00001;
constexpr double defaultInteger = 2.0;

/**
 * Uniform 32-bit generator: a subtract-with-borrow sequence (lags 2 and 3, modulus 2^32 - 18) added to a
 * linear congruential one, in 32-bit arithmetic with a signed borrow.
 */
class UniformGenerator {
  public:
    explicit UniformGenerator(unsigned int seed)
        : m_a(congruential(seed)), m_b(seed), m_c(congruential(m_a)), m_last(seed) {}

    Zor32s next() {
        m_congruential = congruential(m_congruential);
        Zor32u x = m_a - m_c + static_cast<Zor32u>(m_carry);
        m_carry = static_cast<Zor32s>(x) < 0 ? -1 : 0;
        if (m_carry != 0)
            x -= 18;
        m_c = m_a;
        m_a = m_b;
        m_b = x;
        m_last = x;
        return static_cast<Zor32s>(m_congruential + x);
    }

    /** The last output of the borrow sequence: the seed of the next fill. */
    unsigned int seed() const { return m_last; }

  private:
    static Zor32u congruential(Zor32u x) { return x * 69069u + 1013904243u; }

    Zor32u m_a, m_b, m_c, m_last;
    Zor32s m_carry = -1;
    Zor32u m_congruential = 1131199209u;
};

} // namespace

void fillConst(const Elements& to, double re, double im) {
    if (!kvIsComplex(to.type)) {
        fillElements(to, [=](int) { return re; });
        return;
    }
    withComponents(to.type, to.data, [&]<class T>(T* out) {
        for (int i = 0; i < to.length; ++i) {
            *out++ = toComponent<T>(re);
            *out++ = toComponent<T>(im);
        }
    });
}

void fillSequence(const Elements& to, double start, double end, double step, bool wrap) {
    start = std::max(start, kvVector::getMinValue(to.type));
    end = std::min(end, kvVector::getMaxValue(to.type));
    double v = start;
    fillElements(to, [&](int) {
        const double element = v;
        v += step;
        if (v > end)
            v = wrap ? start : end;
        return element;
    });
}

void fillJaehne(const Elements& to, double magn) {
    if (magn < 0)
        return;
    const double min = kvVector::getMinValue(to.type);
    const double max = kvVector::getMaxValue(to.type);
    magn = std::min(magn, (max - min) * 0.5);
    const double offset = kvIsUnsigned(to.type) ? (max + min) * 0.5 : 0.0;
    fillElements(to, [&](int i) {
        const double n = i;
        return magn * std::sin(std::numbers::pi * n * n / (2.0 * to.length)) + offset;
    });
}

void fillRandom(const Elements& to, double lo, double hi, unsigned int& seed) {
    lo = std::max(lo, kvVector::getMinValue(to.type));
    hi = std::min(hi, kvVector::getMaxValue(to.type));
    const double scale = (hi - lo) * 2.3283064365387e-10;
    const double mid = (hi + lo) * 0.5;
    UniformGenerator generator(seed);
    const Elements parts{kvComponent(to.type), to.data, to.length * kvComponents(to.type)};
    fillElements(parts, [&](int) { return generator.next() * scale + mid; });
    seed = generator.seed();
}

/** The default constants, or random values where the session asks for them and the type may hold samples. */
void fillDefault(const Elements& to, unsigned int& seed) {
    const int most = bxGetRandomData();
    const bool isByte = kvElementSize(to.type) == kvComponents(to.type);
    if (most > 0 && !kvIsUnsigned(to.type) && !isByte)
        return fillRandom(to, -most, most, seed);
    const double value = kvIsFloat(to.type) ? defaultFloat : defaultInteger;
    fillConst(to, value, value);
}

void fill(const Elements& to, int mode, double a, double b, unsigned int& seed) {
    const double min = kvVector::getMinValue(to.type);
    const double max = kvVector::getMaxValue(to.type);
    switch (mode) {
    case smDefault:
        return fillDefault(to, seed);
    case smZero:
        return fillConst(to, 0, 0);
    case smOne:
        return fillConst(to, 1, 0);
    case smMax:
        return fillConst(to, max, max);
    case smMin:
        return fillConst(to, min, min);
    case smConst:
        return fillConst(to, a, b);
    case smRandom:
        if (a == b) {
            a = kvIsFloat(to.type) ? -1 : min;
            b = kvIsFloat(to.type) ? 1 : max;
        }
        return fillRandom(to, a, b, seed);
    case smSequence:
        if (to.length > 0) {
            const double step = (b - a) / to.length;
            fillSequence(to, a, b, kvIsFloat(to.type) ? step : std::max(step, 1.0), true);
        }
        return;
    default:
        return;
    }
}

} // namespace kv
