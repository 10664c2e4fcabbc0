// The text forms of vectors, for the dump of test data.
#include "kvelements.h"
#include "kvvector.h"

#include <array>
#include <cstdio>
#include <string>

namespace {

struct Format {
    int width;     // columns of one component
    int precision; // significant digits of floating point
};

/** Width and precision of a component; complex elements print as " (re,im)". */
Format formatOf(kvType component) {
    switch (component) {
    case kv8u:
        return {4, 0};
    case kv16u:
        return {6, 0};
    case kv32u:
        return {11, 0};
    case kv8s:
        return {5, 0};
    case kv16s:
        return {7, 0};
    case kv32s:
        return {12, 0};
    case kv32f:
        return {14, 6};
    case kv64f:
        return {20, 12};
    default:
        return {24, 0};
    }
}

/** Room for any component: 24 columns, or a double with 12 digits. */
using Piece = std::array<char, 40>;

template <class T>
void printComponent(Piece& piece, Format format, T value) {
    if constexpr (std::is_floating_point_v<T>) {
        std::snprintf(piece.data(), piece.size(), "%*.*g", format.width, format.precision,
                      static_cast<double>(value));
    } else if constexpr (std::is_signed_v<T>) {
        std::snprintf(piece.data(), piece.size(), "%*lld", format.width, static_cast<long long>(value));
    } else {
        std::snprintf(piece.data(), piece.size(), "%*llu", format.width,
                      static_cast<unsigned long long>(value));
    }
}

} // namespace

bxString kvVector::getString() const {
    return getDataString(m_type, m_data, m_length);
}

bxString kvVector::getDataString(kvType type, const void* data, int length) {
    std::string text; // grows geometrically: a dump may hold many thousand elements
    if (!data || length < 1)
        return {};
    const Format format = formatOf(kvComponent(type));
    Piece piece;
    kv::withComponents(type, const_cast<void*>(data), [&](const auto* component) {
        for (int i = 0; i < length; ++i) {
            if (!kvIsComplex(type)) {
                printComponent(piece, format, *component++);
                text += piece.data();
                continue;
            }
            printComponent(piece, format, *component++);
            text.append(" (").append(piece.data()).append(",");
            printComponent(piece, format, *component++);
            text.append(piece.data()).append(")");
        }
    });
    return text.c_str();
}

bxString kvVector::getByteString(const void* data, int count) {
    std::string text;
    if (!data)
        return {};
    const auto* bytes = static_cast<const unsigned char*>(data);
    std::array<char, 4> piece;
    for (int i = 0; i < count; ++i) {
        std::snprintf(piece.data(), piece.size(), " %02X", static_cast<unsigned>(bytes[i]));
        text += piece.data();
    }
    return text.c_str();
}
