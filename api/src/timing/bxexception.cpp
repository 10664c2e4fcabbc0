#include "timing/bxexception.h"

#include <algorithm>

namespace {

/** Copies as much of a text as fits behind `used` characters, and ends it; returns the characters used. */
std::size_t append(std::array<char, 256>& buffer, std::size_t used, std::string_view text) {
    const std::size_t n = std::min(text.size(), buffer.size() - 1 - used);
    std::copy_n(text.data(), n, buffer.data() + used);
    buffer[used + n] = '\0';
    return used + n;
}

} // namespace

bxException::bxException(const bxString& info) : bxException("--ZOR. Exception: ", info.view()) {}

bxException::bxException(const char* text) : bxException("--ZOR. Signal: ", std::string_view(text)) {}

bxException::bxException(std::string_view kind, std::string_view text) {
    append(m_info, 0, text);
    append(m_msg, append(m_msg, 0, kind), text);
}
