#include "outputs.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <limits>

namespace {

/** printf into a string. */
template <class... T>
std::string format(const char* form, T... values) {
    std::string text(static_cast<std::size_t>(std::max(0, std::snprintf(nullptr, 0, form, values...))), '\0');
    std::snprintf(text.data(), text.size() + 1, form, values...);
    return text;
}

/** How one block differs. */
struct Difference {
    bool any = false;
    std::size_t index = 0; /**< of the largest one, in components */
    std::string before, after;
    double ulps = 0;
    double decibels = std::numeric_limits<double>::infinity();
    bool wrong = false;
};

/** Floats in their order as integers, so that neighbours differ by 1. */
template <class Float, class Bits>
std::int64_t ordered(Float value) {
    const auto bits = std::bit_cast<Bits>(value);
    constexpr auto sign = static_cast<std::int64_t>(std::numeric_limits<Bits>::min());
    return bits < 0 ? sign - static_cast<std::int64_t>(bits) : static_cast<std::int64_t>(bits);
}

template <class Value>
Value at(std::span<const char> bytes, std::size_t i) {
    Value value;
    std::memcpy(&value, bytes.data() + i * sizeof value, sizeof value);
    return value;
}

template <class Float, class Bits>
Difference compareFloats(std::span<const char> before, std::span<const char> after,
                         const OutputRules& rules) {
    Difference result;
    double signal = 0, noise = 0, largest = -1;
    for (std::size_t i = 0; i < before.size() / sizeof(Float); ++i) {
        const auto a = at<Float>(before, i);
        const auto b = at<Float>(after, i);
        if (std::bit_cast<Bits>(a) == std::bit_cast<Bits>(b)) {
            if (std::isfinite(a))
                signal += static_cast<double>(a) * static_cast<double>(a);
            continue;
        }
        result.any = true;
        const bool finite = std::isfinite(a) && std::isfinite(b);
        const double error = finite ? std::abs(static_cast<double>(a) - static_cast<double>(b))
                                    : std::numeric_limits<double>::infinity();
        if (std::isnan(a) && std::isnan(b))
            continue;
        if (finite) {
            signal += static_cast<double>(a) * static_cast<double>(a);
            noise += error * error;
            const double apart =
                static_cast<double>(ordered<Float, Bits>(a)) - static_cast<double>(ordered<Float, Bits>(b));
            result.ulps = std::max(result.ulps, std::abs(apart));
        }
        result.wrong |= !finite;
        if (error > largest) {
            largest = error;
            result.index = i;
            result.before = format("%.9g", static_cast<double>(a));
            result.after = format("%.9g", static_cast<double>(b));
        }
    }
    if (noise > 0)
        result.decibels = signal > 0 ? 10 * std::log10(signal / noise) : 0;
    result.wrong |= result.any && (!rules.decibels || result.decibels < *rules.decibels);
    return result;
}

template <class Integer>
Difference compareIntegers(std::span<const char> before, std::span<const char> after, const OutputRules&) {
    Difference result;
    double signal = 0, noise = 0, largest = -1;
    for (std::size_t i = 0; i < before.size() / sizeof(Integer); ++i) {
        const auto a = at<Integer>(before, i);
        const auto b = at<Integer>(after, i);
        signal += static_cast<double>(a) * static_cast<double>(a);
        const double error = std::abs(static_cast<double>(a) - static_cast<double>(b));
        noise += error * error;
        if (a == b)
            continue;
        result.any = true;
        if (error > largest) {
            largest = error;
            result.index = i;
            result.before = std::to_string(a);
            result.after = std::to_string(b);
        }
    }
    if (noise > 0)
        result.decibels = signal > 0 ? 10 * std::log10(signal / noise) : 0;
    result.wrong = result.any;
    return result;
}

using Compare = Difference (*)(std::span<const char>, std::span<const char>, const OutputRules&);

struct Type {
    std::string_view name;
    Compare compare;
};

/** Element types by their names in blocks; complex ones compare component by component. */
constexpr std::array types{
    Type{"8u", compareIntegers<std::uint8_t>},       Type{"16u", compareIntegers<std::uint16_t>},
    Type{"32u", compareIntegers<std::uint32_t>},     Type{"64u", compareIntegers<std::uint64_t>},
    Type{"8s", compareIntegers<std::int8_t>},        Type{"16s", compareIntegers<std::int16_t>},
    Type{"32s", compareIntegers<std::int32_t>},      Type{"64s", compareIntegers<std::int64_t>},
    Type{"32f", compareFloats<float, std::int32_t>}, Type{"64f", compareFloats<double, std::int64_t>},
};

/** "Vector 32fc len=16" is 32f; bytes for all that is none. */
const Type& typeOf(std::string_view what) {
    constexpr std::string_view vector = "Vector ";
    if (!what.starts_with(vector))
        return types[0];
    std::string_view name = what.substr(vector.size());
    name = name.substr(0, name.find(' '));
    if (name.ends_with('c'))
        name.remove_suffix(1);
    const auto* const found =
        std::find_if(types.begin(), types.end(), [name](const Type& type) { return type.name == name; });
    return found == types.end() ? types[0] : *found;
}

bool isAddress(std::uint64_t word, const AddressRanges& memory) {
    return std::any_of(memory.begin(), memory.end(),
                       [word](const auto& range) { return range.first <= word && word < range.second; });
}

/** The second side's bytes, with the first side's in the place of what is an address on both. */
std::vector<char> withoutAddresses(std::span<const char> before, std::span<const char> after,
                                   const AddressRanges& memoryBefore, const AddressRanges& memoryAfter) {
    std::vector<char> result(after.begin(), after.end());
    for (std::size_t i = 0; i + 8 <= result.size(); i += 8)
        if (isAddress(at<std::uint64_t>(before, i / 8), memoryBefore) &&
            isAddress(at<std::uint64_t>(after, i / 8), memoryAfter))
            std::copy_n(before.begin() + static_cast<std::ptrdiff_t>(i), 8,
                        result.begin() + static_cast<std::ptrdiff_t>(i));
    return result;
}

/** Blocks count from 0 in each call. */
std::string named(const Combination& combination, std::size_t i) {
    const Block& block = combination.blocks[i];
    std::size_t first = i;
    while (first > 0 && combination.blocks[first - 1].call == block.call)
        --first;
    std::string text = "block " + std::to_string(i - first);
    if (!block.what.empty())
        text += " (" + std::string(block.what) + ")";
    return block.call > 1 ? text + " after call " + std::to_string(block.call) : text;
}

/** Tells of a difference that counts more than those before. */
void note(OutputComparison& result, bool wrong, const std::string& text) {
    if (result.difference.empty() || (wrong && result.right))
        result.difference = text;
    result.equal = false;
    result.right = result.right && !wrong;
}

/** Where the data differ before the call, what differs behind it tells where, but not whether it is right. */
OutputComparison marked(OutputComparison result) {
    if (!result.dataDiffer)
        return result;
    result.equal = result.right = false;
    result.difference = "the data before the call differ" +
                        (result.difference.empty() ? "" : "; after it " + result.difference);
    return result;
}

} // namespace

OutputComparison compareOutputs(const PairRow& row, const OutputRules& rules,
                                const AddressRanges& memoryBefore, const AddressRanges& memoryAfter) {
    OutputComparison result;
    result.decibels = std::numeric_limits<double>::infinity();
    const Combination& before = row.before();
    const Combination& after = row.after();
    result.dataDiffer = before.digest != after.digest;
    if (before.status != after.status) {
        const auto text = [](const std::optional<int>& status) {
            return status ? "status " + std::to_string(*status) : std::string("no return");
        };
        note(result, true, text(before.status) + " and " + text(after.status));
        return marked(result);
    }
    if (before.blocks.size() != after.blocks.size())
        note(result, true,
             std::to_string(before.blocks.size()) + " and " + std::to_string(after.blocks.size()) +
                 " blocks of data");
    for (std::size_t i = 0; i < std::min(before.blocks.size(), after.blocks.size()); ++i) {
        const Block& a = before.blocks[i];
        const Block& b = after.blocks[i];
        if (a.bytes.size() != b.bytes.size() || a.what != b.what) {
            note(result, true, named(before, i) + " and " + named(after, i));
            continue;
        }
        if (std::equal(a.bytes.begin(), a.bytes.end(), b.bytes.begin()))
            continue;
        const Type& type = typeOf(a.what);
        std::vector<char> second(b.bytes.begin(), b.bytes.end());
        if (type.name == "8u")
            second = withoutAddresses(a.bytes, b.bytes, memoryBefore, memoryAfter);
        const Difference difference = type.compare(a.bytes, second, rules);
        if (!difference.any)
            continue;
        result.ulps = std::max(result.ulps, difference.ulps);
        result.decibels = std::min(result.decibels, difference.decibels);
        note(result, difference.wrong,
             named(before, i) + " index " + std::to_string(difference.index) + ": " + difference.before +
                 " and " + difference.after);
    }
    return marked(result);
}
