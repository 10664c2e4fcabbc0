#include "kinds.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::string_view, static_cast<std::size_t>(Group::count)> groupNames = {
    "integer",        "integer multiply", "integer divide", "add",     "multiply", "multiply-add", "divide",
    "vector integer", "vector multiply",  "logic",          "shuffle", "convert",  "move",         "load",
    "store",          "branch",           "call",           "return",  "string",   "other"};

constexpr std::array<std::string_view, 5> precisionNames = {"", " half", " float", " double", " extended"};

/** Names by how they begin; the first that fits counts. */
struct Row {
    std::string_view begin;
    Group group;
    int operations = 0;
};

/** In front of one of ps, pd, ss, sd, ph, sh. */
constexpr std::array floatRows = {
    Row{"fmadd", Group::multiplyAdd, 2},
    Row{"fmsub", Group::multiplyAdd, 2},
    Row{"fnmadd", Group::multiplyAdd, 2},
    Row{"fnmsub", Group::multiplyAdd, 2},
    Row{"add", Group::floatAdd, 1},
    Row{"sub", Group::floatAdd, 1},
    Row{"hadd", Group::floatAdd, 1},
    Row{"hsub", Group::floatAdd, 1},
    Row{"max", Group::floatAdd},
    Row{"min", Group::floatAdd},
    Row{"cmp", Group::floatAdd},
    Row{"comi", Group::floatAdd},
    Row{"ucomi", Group::floatAdd},
    Row{"round", Group::floatAdd},
    Row{"rndscale", Group::floatAdd},
    Row{"range", Group::floatAdd},
    Row{"getexp", Group::floatAdd},
    Row{"getmant", Group::floatAdd},
    Row{"fixupimm", Group::floatAdd},
    Row{"mul", Group::floatMultiply, 1},
    Row{"scalef", Group::floatMultiply},
    Row{"reduce", Group::floatMultiply},
    Row{"rcp", Group::floatMultiply},
    Row{"rsqrt", Group::floatMultiply},
    Row{"dp", Group::floatMultiply, 2},
    Row{"div", Group::floatDivide, 1},
    Row{"sqrt", Group::floatDivide, 1},
    Row{"and", Group::logic},
    Row{"or", Group::logic},
    Row{"xor", Group::logic},
    Row{"test", Group::logic},
    Row{"shuf", Group::shuffle},
    Row{"unpck", Group::shuffle},
    Row{"perm", Group::shuffle},
    Row{"blend", Group::shuffle},
    Row{"insert", Group::shuffle},
    Row{"extract", Group::shuffle},
    Row{"compress", Group::shuffle},
    Row{"expand", Group::shuffle},
    Row{"movmsk", Group::shuffle},
    Row{"movhl", Group::shuffle},
    Row{"movlh", Group::shuffle},
    Row{"movh", Group::shuffle},
    Row{"movl", Group::shuffle},
    Row{"broadcast", Group::shuffle},
    Row{"gather", Group::load},
    Row{"scatter", Group::store},
    Row{"maskmov", Group::move},
    Row{"mov", Group::move},
};

/** All others. */
constexpr std::array otherRows = {Row{"cvt", Group::convert},
                                  Row{"pmovm", Group::shuffle},
                                  Row{"pmovs", Group::convert},
                                  Row{"pmovz", Group::convert},
                                  Row{"pmov", Group::convert},
                                  Row{"pmul", Group::vectorMultiply},
                                  Row{"pmadd", Group::vectorMultiply},
                                  Row{"psad", Group::vectorMultiply},
                                  Row{"pdp", Group::vectorMultiply},
                                  Row{"pclmul", Group::vectorMultiply},
                                  Row{"mpsad", Group::vectorMultiply},
                                  Row{"dbpsad", Group::vectorMultiply},
                                  Row{"pshuf", Group::shuffle},
                                  Row{"punpck", Group::shuffle},
                                  Row{"pack", Group::shuffle},
                                  Row{"palign", Group::shuffle},
                                  Row{"align", Group::shuffle},
                                  Row{"perm", Group::shuffle},
                                  Row{"pblend", Group::shuffle},
                                  Row{"pinsr", Group::shuffle},
                                  Row{"pextr", Group::shuffle},
                                  Row{"pbroadcast", Group::shuffle},
                                  Row{"broadcast", Group::shuffle},
                                  Row{"insert", Group::shuffle},
                                  Row{"extract", Group::shuffle},
                                  Row{"shuf", Group::shuffle},
                                  Row{"pslldq", Group::shuffle},
                                  Row{"psrldq", Group::shuffle},
                                  Row{"movddup", Group::shuffle},
                                  Row{"movshdup", Group::shuffle},
                                  Row{"movsldup", Group::shuffle},
                                  Row{"pcompress", Group::shuffle},
                                  Row{"pexpand", Group::shuffle},
                                  Row{"pgather", Group::load},
                                  Row{"pscatter", Group::store},
                                  Row{"pand", Group::logic},
                                  Row{"por", Group::logic},
                                  Row{"pxor", Group::logic},
                                  Row{"ptern", Group::logic},
                                  Row{"ptest", Group::logic},
                                  Row{"pmaskmov", Group::move},
                                  Row{"maskmov", Group::move},
                                  Row{"mov", Group::move},
                                  Row{"lddqu", Group::move},
                                  Row{"zero", Group::other},
                                  Row{"ldmxcsr", Group::other},
                                  Row{"stmxcsr", Group::other},
                                  Row{"pcmp", Group::vectorInteger},
                                  Row{"p", Group::vectorInteger}};

/** Behind the "f" of the x87's names. */
constexpr std::array x87Rows = {Row{"add", Group::floatAdd, 1},
                                Row{"iadd", Group::floatAdd, 1},
                                Row{"sub", Group::floatAdd, 1},
                                Row{"isub", Group::floatAdd, 1},
                                Row{"com", Group::floatAdd},
                                Row{"icom", Group::floatAdd},
                                Row{"ucom", Group::floatAdd},
                                Row{"rndint", Group::floatAdd},
                                Row{"mul", Group::floatMultiply, 1},
                                Row{"imul", Group::floatMultiply, 1},
                                Row{"div", Group::floatDivide, 1},
                                Row{"idiv", Group::floatDivide, 1},
                                Row{"sqrt", Group::floatDivide, 1},
                                Row{"ld", Group::move},
                                Row{"st", Group::move},
                                Row{"ist", Group::convert},
                                Row{"ild", Group::convert},
                                Row{"xch", Group::move}};

template <class Rows>
const Row* find(const Rows& rows, std::string_view name) {
    const auto found = std::find_if(rows.begin(), rows.end(),
                                    [name](const Row& row) { return name.starts_with(row.begin); });
    return found == rows.end() ? nullptr : &*found;
}

Precision precisionOf(char letter) {
    return letter == 's' ? Precision::single : letter == 'd' ? Precision::full : Precision::half;
}

/** Whether the name ends as those of floating-point instructions do. */
bool isFloat(std::string_view name) {
    if (name.size() < 4 || name[0] == 'p' || name.starts_with("cvt"))
        return false;
    const char kind = name[name.size() - 2];
    const char size = name[name.size() - 1];
    return (kind == 'p' || kind == 's') && (size == 's' || size == 'd' || size == 'h');
}

} // namespace

std::string_view text(Group group) {
    return groupNames[static_cast<std::size_t>(group)];
}

std::string text(const Kind& kind) {
    std::string line(text(kind.group));
    line += precisionNames[static_cast<std::size_t>(kind.precision)];
    return kind.bits > 0 ? line + " " + std::to_string(kind.bits) : line;
}

NamedKind vectorKind(std::string_view name) {
    if (isFloat(name)) {
        // The three orders of operands of a multiply-add stand before its ending.
        if (const Row* const row = find(floatRows, name)) {
            const bool scalar = name[name.size() - 2] == 's';
            return {row->group, precisionOf(name.back()), scalar, row->operations};
        }
    }
    const Row* const row = find(otherRows, name);
    return {row ? row->group : Group::other, Precision::none, false, 0};
}

NamedKind x87Kind(std::string_view name) {
    const Row* const row = name.starts_with('f') ? find(x87Rows, name.substr(1)) : nullptr;
    return {row ? row->group : Group::other, Precision::extended, true, row ? row->operations : 0};
}
