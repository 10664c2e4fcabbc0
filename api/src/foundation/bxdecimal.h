/** \file
 * Decimal texts of numbers, without memory from the heap.
 */
#ifndef BXDECIMAL_H
#define BXDECIMAL_H

#include <array>
#include <charconv>
#include <concepts>
#include <string_view>

/** The text of one number: to the last character what printf writes, in a fraction of its time. */
class bxDecimal {
  public:
    /** In decimal. */
    template <std::integral T>
    explicit bxDecimal(T value) {
        m_length = lengthTo(std::to_chars(m_text.data(), end(), value).ptr);
    }
    /** As "%.3g". */
    explicit bxDecimal(double value);

    /** As "%.*f" with up to six decimals. */
    static bxDecimal fixed(double value, int decimals);
    /** As "%.*e" with up to six decimals. */
    static bxDecimal scientific(double value, int decimals);

    std::string_view view() const { return {m_text.data(), m_length}; }

  private:
    bxDecimal() = default;

    char* end() { return m_text.data() + m_text.size(); }
    std::size_t lengthTo(const char* end) const { return static_cast<std::size_t>(end - m_text.data()); }
    bool write(double value, int decimals, unsigned most);
    void trim();

    std::array<char, 328> m_text; /**< the largest double has 309 digits */
    std::size_t m_length = 0;
};

#endif
