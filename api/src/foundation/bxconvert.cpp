/** \file
 * Conversions between text and numbers.
 */
#include "foundation/bxdecimal.h"
#include "foundation/bxreading.h"
#include "foundation/bxstring.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <cstdio>
#include <string_view>

namespace {

constexpr std::string_view blanks = " \t\n\v\f\r";

/** What stands behind the blanks. */
std::string_view withoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(blanks), text.size()));
}

/** A number in front of anything else. */
template <class T>
bxReading<T> readInteger(const bxString& text, T none) {
    std::string_view rest(text.c_str()); // up to a NUL in it
    int base = 10;
    if (rest.starts_with("0x") || rest.starts_with("0X")) {
        const bool digits = rest.size() > 2 && std::isxdigit(static_cast<unsigned char>(rest[2]));
        rest.remove_prefix(digits ? 2 : 0); // "0x" alone is a 0 with something behind
        base = digits ? 16 : 10;
    } else {
        rest = withoutBlanks(rest);
        if (rest.empty())
            return {none};
        if (rest.starts_with('+') && !rest.starts_with("+-"))
            rest.remove_prefix(1);
    }
    bxReading<T> reading{none};
    const auto [end, error] = std::from_chars(rest.data(), rest.data() + rest.size(), reading.value, base);
    rest.remove_prefix(static_cast<std::size_t>(end - rest.data()));
    reading.good = error == std::errc();
    reading.whole = withoutBlanks(rest).empty();
    return reading;
}

/** Gives a value that was read to its place, and tells the text. */
template <class T>
void store(T& value, const bxReading<T>& reading, const bxString& text) {
    text.setFailed(!reading.good);
    if (reading.good)
        value = reading.value;
}

} // namespace

bxString& bxString::appendSigned(long long value) {
    return append(bxDecimal(value).view());
}

bxString& bxString::appendUnsigned(unsigned long long value) {
    return append(bxDecimal(value).view());
}

bxString& bxString::operator<<(double value) {
    return append(bxDecimal(value).view());
}

bxString& bxString::operator<<(const void* address) {
    if (!address)
        return append("NULL");
    const long long widened = reinterpret_cast<std::intptr_t>(address);
    std::array<char, 17> digits;
    std::snprintf(digits.data(), digits.size(), (bxString("%") + prefixI64() + "X").c_str(), widened);
    return append(digits.data());
}

bxReading<int> bxReadInt(const bxString& text, int none) {
    return readInteger(text, none);
}

bxReading<long long> bxReadLong(const bxString& text, long long none) {
    return readInteger(text, none);
}

bxReading<double> bxReadDouble(const bxString& text, double none) {
    bxReading<double> reading{none};
    int length = 0;
    const int fields = std::sscanf(text.c_str(), "%lf%n", &reading.value, &length);
    reading.good = fields != 0;
    reading.whole = fields < 1 || withoutBlanks(text.c_str() + length).empty();
    return reading;
}

int& operator<<(int& value, const bxString& text) {
    store(value, bxReadInt(text, value), text);
    return value;
}

long long& operator<<(long long& value, const bxString& text) {
    store(value, bxReadLong(text, value), text);
    return value;
}

double& operator<<(double& value, const bxString& text) {
    store(value, bxReadDouble(text, value), text);
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
