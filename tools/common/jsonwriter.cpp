#include "jsonwriter.h"

#include <array>
#include <charconv>
#include <cmath>

namespace {

/** Bytes of the well-formed UTF-8 character at the text's start, 0 where there is none (RFC 3629). */
std::size_t utf8Length(std::string_view text) {
    const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned lead = byte(0);
    const std::size_t length = lead < 0x80   ? 1
                               : lead < 0xC2 ? 0
                               : lead < 0xE0 ? 2
                               : lead < 0xF0 ? 3
                               : lead < 0xF5 ? 4
                                             : 0;
    if (length > text.size())
        return 0;
    for (std::size_t i = 1; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    // Over-long forms, surrogates and what lies beyond U+10FFFF.
    const bool wrong = length > 2 && ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F) ||
                                      (lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F));
    return wrong ? 0 : length;
}

std::string quoted(std::string_view text) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string result = "\"";
    while (!text.empty()) {
        const std::size_t length = utf8Length(text);
        const auto byte = static_cast<unsigned char>(text[0]);
        if (length == 0) {
            result += "\xEF\xBF\xBD";
        } else if (text[0] == '"' || text[0] == '\\') {
            result += '\\';
            result += text[0];
        } else if (byte < 0x20 || text[0] == '<') {
            result += "\\u00";
            result += digits[byte >> 4];
            result += digits[byte & 15];
        } else {
            result += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return result + "\"";
}

} // namespace

void JsonWriter::separate() {
    if (m_afterKey) {
        m_afterKey = false;
        return;
    }
    if (m_open.empty())
        return;
    if (!m_first)
        m_text += ',';
    if (m_open.back() == 'l')
        m_text += '\n' + std::string(2 * m_open.size(), ' ');
    else if (!m_first)
        m_text += ' ';
    m_first = false;
}

void JsonWriter::raw(std::string_view token) {
    separate();
    m_text += token;
}

void JsonWriter::begin(char bracket, Layout layout) {
    separate();
    m_text += bracket;
    m_open += layout == Layout::lines ? 'l' : 'f';
    m_first = true;
}

void JsonWriter::end(char bracket) {
    const bool lines = m_open.back() == 'l';
    m_open.pop_back();
    if (lines && !m_first)
        m_text += '\n' + std::string(2 * m_open.size(), ' ');
    m_text += bracket;
    m_first = false;
}

void JsonWriter::key(std::string_view name) {
    raw(quoted(name));
    m_text += ": ";
    m_afterKey = true;
}

void JsonWriter::value(std::string_view text) {
    raw(quoted(text));
}

void JsonWriter::value(double number) {
    if (!std::isfinite(number)) {
        null();
        return;
    }
    std::array<char, 32> buffer{};
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    raw(std::string_view(buffer.data(), static_cast<std::size_t>(end - buffer.data())));
}
