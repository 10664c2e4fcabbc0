#include "cells.h"

#include <charconv>
#include <cmath>

namespace {

/** Length of the quoted cell that the text begins with, up to the comma behind it; npos when it is none. */
std::size_t quotedLength(std::string_view text) {
    const std::size_t open = text.find_first_not_of(' ');
    if (open == std::string_view::npos || text[open] != '"')
        return std::string_view::npos;
    for (std::size_t close = text.find('"', open + 1); close != std::string_view::npos;
         close = text.find('"', close + 1))
        if (close + 1 == text.size() || text[close + 1] == ',')
            return close + 1;
    return std::string_view::npos;
}

} // namespace

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view blanks = " \t\r";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

std::vector<std::string> splitCells(std::string_view line) {
    std::vector<std::string> cells;
    for (;;) {
        if (const std::size_t length = quotedLength(line); length != std::string_view::npos) {
            const std::size_t open = line.find('"');
            cells.emplace_back(line.substr(open + 1, length - open - 2));
            line.remove_prefix(length);
        } else {
            const std::size_t comma = std::min(line.find(','), line.size());
            cells.emplace_back(line.substr(0, comma));
            line.remove_prefix(comma);
        }
        if (line.empty())
            return cells;
        line.remove_prefix(1);
    }
}

std::optional<double> toNumber(std::string_view text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc{} || end != text.data() + text.size() || !std::isfinite(value))
        return std::nullopt;
    return value;
}

double roundingOf(std::string_view number) {
    const auto value = toNumber(number);
    if (!value || *value == 0)
        return 0;
    const std::size_t exponentAt = std::min(number.find_first_of("eE"), number.size());
    const std::string_view mantissa = number.substr(0, exponentAt);
    const std::size_t point = mantissa.find('.');
    const auto decimals =
        point == std::string_view::npos ? 0.0 : static_cast<double>(mantissa.size() - point - 1);
    const double scale = *toNumber(mantissa);
    return 0.5 * std::pow(10.0, -decimals) / std::abs(scale);
}
