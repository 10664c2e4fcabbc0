#include "json.h"

#include <cmath>

Json jsonNumber(double number) {
    constexpr double exact = 9007199254740992; // 2^53: whole numbers are exact up to here
    if (std::abs(number) < exact && number == std::trunc(number))
        return static_cast<std::int64_t>(number);
    return number;
}

void JsonText::add(std::string_view name, const Json& value) {
    beginMember(name);
    append(value);
}

void JsonText::beginMember(std::string_view name) {
    m_text += m_text.size() == 1 ? "\n" : ",\n";
    append(name);
    m_text += ": ";
}

void JsonText::append(const Json& value) {
    for (const char c : value.dump(-1, ' ', false, Json::error_handler_t::replace)) {
        if (c == '<')
            m_text += "\\u003c";
        else
            m_text += c;
    }
}
