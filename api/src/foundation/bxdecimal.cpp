#include "foundation/bxdecimal.h"

#include <cmath>

namespace {

constexpr std::array powersOfTen = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6};
constexpr int mostDecimals = static_cast<int>(powersOfTen.size()) - 1;

/** With this many units of the last place or more the fast way is not taken: they fit into 30 bits. */
constexpr unsigned mostUnits = 1'000'000'000;

} // namespace

/**
 * Writes a number from 0 on in units of its last place, of which there are less than `most`. The product with
 * the power of ten is off by half a bit of 53, so the unit that it is rounded to is the right one except near
 * the middle between two: there, and where there are too many units, this gives false.
 */
bool bxDecimal::write(double value, int decimals, unsigned most) {
    const double units = value * powersOfTen[static_cast<std::size_t>(decimals)];
    if (!(units >= 0 && units < most - 1) || std::signbit(units))
        return false;
    auto whole = static_cast<unsigned>(units);
    const double rest = units - whole;
    constexpr double unsure = 1e-6; // of a unit: the error is at most 1e9 / 2 to the 53
    if (std::fabs(rest - 0.5) < unsure)
        return false;
    whole += rest > 0.5;
    // Backwards, with as many zeros in front as a digit before the point needs.
    std::array<char, 16> digits;
    std::size_t at = digits.size();
    for (int i = 0; whole != 0 || i <= decimals; ++i, whole /= 10) {
        if (i == decimals && i > 0)
            digits[--at] = '.';
        digits[--at] = static_cast<char>('0' + whole % 10);
    }
    m_length = std::string_view(digits.data() + at, digits.size() - at).copy(m_text.data(), m_text.size());
    return true;
}

/** Takes the zeros at the end of a fraction away, with the point if nothing remains behind it. */
void bxDecimal::trim() {
    if (view().find('.') == std::string_view::npos)
        return;
    m_length = view().find_last_not_of('0') + 1;
    m_length -= m_text[m_length - 1] == '.';
}

bxDecimal::bxDecimal(double value) {
    constexpr unsigned threeDigits = 1000;
    constexpr double least = 1e-4; // smaller ones are written with an exponent
    if (value >= least && value < threeDigits) {
        int decimals = 2 - (value >= 10) - (value >= 100);
        for (const double bound : {1.0, 0.1, 0.01, 0.001})
            decimals += value < bound;
        if (decimals <= mostDecimals && write(value, decimals, threeDigits)) {
            trim();
            return;
        }
    } else if (value == 0 && !std::signbit(value)) {
        m_text[0] = '0';
        m_length = 1;
        return;
    }
    m_length = lengthTo(std::to_chars(m_text.data(), end(), value, std::chars_format::general, 3).ptr);
}

bxDecimal bxDecimal::fixed(double value, int decimals) {
    bxDecimal text;
    if (!text.write(value, decimals, mostUnits))
        text.m_length = text.lengthTo(
            std::to_chars(text.m_text.data(), text.end(), value, std::chars_format::fixed, decimals).ptr);
    return text;
}

bxDecimal bxDecimal::scientific(double value, int decimals) {
    bxDecimal text;
    text.m_length = text.lengthTo(
        std::to_chars(text.m_text.data(), text.end(), value, std::chars_format::scientific, decimals).ptr);
    return text;
}
