/** \file
 * Conversions between text and numbers.
 */
#include "foundation/bxstring.h"

#include <array>
#include <charconv>
#include <cstdint>
#include <cstdio>

namespace {

/** Room for any 64-bit integer or "%.3g" number. */
using Digits = std::array<char, 32>;

template <class T>
std::string_view decimal(Digits& digits, T value) {
    const char* end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), static_cast<std::size_t>(end - digits.data())};
}

/** Scans one number; a text that ends before anything could be scanned is no failure. */
template <class T>
void scan(const bxString& text, const bxString& format, T& value) {
    text.setFailed(std::sscanf(text.c_str(), format.c_str(), &value) == 0);
}

/** The scan letter of an integer: that of its "0x", or decimal. */
char integerFormat(const bxString& text) {
    const bool hexadecimal = text.length() > 1 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
    return hexadecimal ? text[1] : 'd';
}

} // namespace

bxString& bxString::appendSigned(long long value) {
    Digits digits;
    return append(decimal(digits, value));
}

bxString& bxString::appendUnsigned(unsigned long long value) {
    Digits digits;
    return append(decimal(digits, value));
}

bxString& bxString::operator<<(double value) {
    Digits digits;
    std::snprintf(digits.data(), digits.size(), "%.3g", value);
    return append(digits.data());
}

bxString& bxString::operator<<(const void* address) {
    if (!address)
        return append("NULL");
    const long long widened = reinterpret_cast<std::intptr_t>(address);
    Digits digits;
    std::snprintf(digits.data(), digits.size(), (bxString("%") + prefixI64() + "X").c_str(), widened);
    return append(digits.data());
}

int& operator<<(int& value, const bxString& text) {
    scan(text, bxString("%") + integerFormat(text), value);
    return value;
}

long long& operator<<(long long& value, const bxString& text) {
    scan(text, bxString("%") + bxString::prefixI64() + integerFormat(text), value);
    return value;
}

double& operator<<(double& value, const bxString& text) {
    scan(text, "%lf", value);
    return value;
}

float& operator<<(float& value, const bxString& text) {
    double wide = value;
    wide << text;
    value = static_cast<float>(wide);
    return value;
}

bool& operator<<(bool& value, const bxString& text) {
    bxString word = text.toLower();
    word.trim();
    value = word[0] == 'y' || word[0] == 't' || word == "1";
    text.setFailed(!value && word[0] != 'n' && word[0] != 'f' && !(word == "0"));
    return value;
}
