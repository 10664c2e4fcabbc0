/** \file
 * What instructions do, by their names.
 */
#ifndef EXPLAIN_KINDS_H
#define EXPLAIN_KINDS_H

#include <compare>
#include <string>
#include <string_view>

/** Instructions that the same parts of a processor carry out. */
enum class Group {
    integer,
    integerMultiply,
    integerDivide,
    floatAdd, /**< comparisons, minima and roundings, too */
    floatMultiply,
    multiplyAdd,
    floatDivide, /**< square roots, too */
    vectorInteger,
    vectorMultiply,
    logic,
    shuffle,
    convert,
    move,
    load,
    store,
    branch,
    call,
    leave, /**< RET */
    string,
    other,
    count
};

enum class Precision { none, half, single, full, extended };

/** Group, what numbers, and how many bits of them at once: 32 or 64 are one number. */
struct Kind {
    Group group = Group::other;
    Precision precision = Precision::none;
    int bits = 0; /**< 0 for integers of the general registers */

    auto operator<=>(const Kind&) const = default;
};

/** "multiply-add float 256", "integer", "shuffle 128". */
std::string text(const Kind& kind);
std::string_view text(Group group);

/** What a name says of an instruction of the vector or floating-point registers. */
struct NamedKind {
    Group group = Group::other;
    Precision precision = Precision::none;
    bool scalar = false;
    /** Floating-point additions, multiplications, divisions and roots for each number of the result. */
    int operations = 0;
};

/** \param name  in small letters, without the "v" of the newer encodings: "addps", "pshufd" */
NamedKind vectorKind(std::string_view name);

/** The same of the x87's instructions: "fadd". */
NamedKind x87Kind(std::string_view name);

#endif
