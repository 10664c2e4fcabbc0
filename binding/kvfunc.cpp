#include "kvfunc.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstring>

namespace {

struct TypeName {
    kvType type;
    const char* name;
};

constexpr std::array<TypeName, 17> typeNames{{{kv8u, "8u"},
                                              {kv16u, "16u"},
                                              {kv32u, "32u"},
                                              {kv64u, "64u"},
                                              {kv8s, "8s"},
                                              {kv16s, "16s"},
                                              {kv32s, "32s"},
                                              {kv64s, "64s"},
                                              {kv32f, "32f"},
                                              {kv64f, "64f"},
                                              {kv16uc, "16uc"},
                                              {kv8sc, "8sc"},
                                              {kv16sc, "16sc"},
                                              {kv32sc, "32sc"},
                                              {kv64sc, "64sc"},
                                              {kv32fc, "32fc"},
                                              {kv64fc, "64fc"}}};

/** Base names whose functions read bytes although their name has no type part. */
constexpr const char* byteStreamBases[] = {"DecodeDatStrElt", "DecodeFillElt",   "UnpackFrameHeader",
                                           "UnpackSideInfo",  "NoiselessDecode", "NoiselessDecoder"};

constexpr int maxComparedTokens = 3;

bool isDigit(char c) {
    return std::isdigit(static_cast<unsigned char>(c)) != 0;
}

int typeTokenLength(const char* text) {
    int digits = 0;
    while (isDigit(text[digits]))
        ++digits;
    if (digits == 0 || text[digits] == '\0' || !std::strchr("usf", text[digits]))
        return 0;
    return text[digits + 1] == 'c' ? digits + 2 : digits + 1;
}

int baseEnd(const char* name) {
    for (const char* at = std::strchr(name, '_'); at; at = std::strchr(at + 1, '_'))
        if (typeTokenLength(at + 1) > 0)
            return static_cast<int>(at - name);
    return -1;
}

/** The token of a type part at a position, empty behind the last one; moves the position past it. */
bxString nextToken(const char*& at) {
    const int length = typeTokenLength(at);
    bxString token = bxString(at).substr(0, length);
    at += length;
    return token;
}

/** Length of the channel code that a descriptor text starts with, 0 when it starts with none. */
int channelCodeLength(const char* text) {
    const int lead = text[0] == 'A' ? 1 : 0;
    const bool code = (text[lead] == 'C' || text[lead] == 'P') && isDigit(text[lead + 1]);
    return code ? lead + 2 : 0;
}

int compareTokens(const bxString& a, const bxString& b) {
    if (a.length() == 0 || b.length() == 0)
        return (a.length() != 0) - (b.length() != 0);
    const kvType ta = kvFunc::stringToType(a);
    const kvType tb = kvFunc::stringToType(b);
    if (kvComponent(ta) != kvComponent(tb))
        return kvComponent(ta) - kvComponent(tb);
    return kvIsComplex(ta) - kvIsComplex(tb);
}

bool startsWith(const char* text, const char* begin) {
    return std::strncmp(text, begin, std::strlen(begin)) == 0;
}

} // namespace

int lenOfType(const bxString& text) {
    return typeTokenLength(text.c_str());
}

int endOfBase(const bxString& name) {
    return baseEnd(name.c_str());
}

void kvFunc::parseFunction(bxString& base, bxString& types, bxString& descr) const {
    const int start = prefix().length();
    const bxString rest = substr(start);
    const int end = baseEnd(rest.c_str());
    types = "";
    descr = "";
    if (end < 0) {
        base = rest;
        return;
    }
    base = rest.substr(0, end);
    const int typesEnd = rest.find("_", end + 1);
    if (typesEnd < 0) {
        types = rest.substr(end + 1);
    } else {
        types = rest.substr(end + 1, typesEnd - end - 1);
        descr = rest.substr(typesEnd + 1);
    }
}

bxString kvFunc::prefix() const {
    return startsWith(c_str(), "zors") || startsWith(c_str(), "zori") ? substr(0, 4) : bxString();
}

bxString kvFunc::baseName() const {
    bxString base, types, descr;
    parseFunction(base, types, descr);
    return base;
}

bxString kvFunc::typeName() const {
    bxString base, types, descr;
    parseFunction(base, types, descr);
    return types;
}

bxString kvFunc::descrName() const {
    bxString base, types, descr;
    parseFunction(base, types, descr);
    return descr;
}

kvType kvFunc::type(int n) const {
    if (n == 0) {
        const bxString base = baseName();
        const bool bytes = std::any_of(std::begin(byteStreamBases), std::end(byteStreamBases),
                                       [&](const char* name) { return startsWith(base.c_str(), name); });
        return bytes ? kv8u : type(1);
    }
    std::array<kvType, 4> types{};
    getTypes(types[0], types[1], types[2], types[3]);
    return n >= 1 && n <= 4 ? types[static_cast<std::size_t>(n - 1)] : kvUndef;
}

kvType kvFunc::type(kvArg arg) const {
    std::array<kvType, 4> types{};
    getTypes(types[0], types[1], types[2], types[3]);
    if (arg == kvArgSrc)
        return types[0];
    const auto last = std::find_if(types.rbegin(), types.rend(), [](kvType t) { return t != kvUndef; });
    return last == types.rend() ? kvUndef : *last;
}

void kvFunc::getTypes(kvType& t1, kvType& t2, kvType& t3, kvType& t4) const {
    const bxString types = typeName();
    const char* at = types.c_str();
    for (kvType* t : {&t1, &t2, &t3, &t4})
        *t = stringToType(nextToken(at));
    updateTypes(t1, t2, t3, t4);
}

bxString kvFunc::channelsName(int n) const {
    const bxString descr = descrName();
    bxString code;
    const char* at = descr.c_str();
    for (int i = 0; i < n && channelCodeLength(at) > 0; ++i) {
        const int length = channelCodeLength(at);
        code = bxString(at).substr(0, length);
        at += length;
    }
    return code;
}

int kvFunc::channels(int n) const {
    int count[2] = {1, 1};
    for (int i = 0; i < 2; ++i) {
        const bxString code = channelsName(i + 1);
        if (code.length() > 0)
            count[i] = code.c_str()[code.length() - 1] - '0';
    }
    updateChannels(count[0], count[1]);
    return count[n > 1 ? 1 : 0];
}

bool kvFunc::plane(int n) const {
    bool planar[2] = {};
    for (int i = 0; i < 2; ++i)
        planar[i] = channelsName(i + 1).find("P", 0) >= 0;
    updatePlanes(planar[0], planar[1]);
    return planar[n > 1 ? 1 : 0];
}

bool kvFunc::alpha(int n) const {
    return startsWith(channelsName(n).c_str(), "A");
}

bxString kvFunc::descrFlags() const {
    const bxString descr = descrName();
    const char* at = descr.c_str();
    while (channelCodeLength(at) > 0)
        at += channelCodeLength(at);
    return at;
}

bool kvFunc::inplace() const {
    return descrFlags().find("I", 0) >= 0;
}

bool kvFunc::mask() const {
    return descrFlags().find("M", 0) >= 0;
}

bool kvFunc::scale() const {
    return descrFlags().find("Sfs", 0) >= 0;
}

bool kvFunc::roi() const {
    return descrFlags().find("R", 0) >= 0;
}

bool kvFunc::coi() const {
    return descrFlags().find("C", 0) >= 0;
}

int kvFunc::compare(const kvFunc& other) const {
    bxString base[2], types[2], descr[2];
    parseFunction(base[0], types[0], descr[0]);
    other.parseFunction(base[1], types[1], descr[1]);
    if (const int order = (prefix() + base[0]).compare(other.prefix() + base[1]); order != 0)
        return order;
    if (const int order = compareTypes(types[0], types[1]); order != 0)
        return order;
    return compareDescr(descr[0], descr[1]);
}

int kvFunc::compareTypes(const bxString& a, const bxString& b) {
    const char* atA = a.c_str();
    const char* atB = b.c_str();
    for (int i = 0; i < maxComparedTokens; ++i)
        if (const int order = compareTokens(nextToken(atA), nextToken(atB)); order != 0)
            return order;
    return 0;
}

int kvFunc::compareDescr(const bxString& a, const bxString& b) {
    const bool inplaceA = a.find("I", 0) >= 0;
    const bool inplaceB = b.find("I", 0) >= 0;
    if (inplaceA != inplaceB)
        return inplaceA ? 1 : -1;
    if (startsWith(a.c_str(), "AC4") && startsWith(b.c_str(), "C"))
        return 1;
    if (startsWith(a.c_str(), "C") && startsWith(b.c_str(), "AC4"))
        return -1;
    return a.compare(b);
}

bxString kvFunc::typeToString(kvType type) {
    const auto row = std::find_if(typeNames.begin(), typeNames.end(),
                                  [&](const TypeName& entry) { return entry.type == type; });
    return row == typeNames.end() ? "undef" : row->name;
}

kvType kvFunc::stringToType(const bxString& text) {
    const auto row = std::find_if(typeNames.begin(), typeNames.end(), [&](const TypeName& entry) {
        return std::strcmp(entry.name, text.c_str()) == 0;
    });
    return row == typeNames.end() ? kvUndef : row->type;
}

kvFuncCells::kvFuncCells(const kvFunc& func) {
    bxString base;
    func.parseFunction(base, types, descr);
    function = func.prefix() + base;
}

void kvFunc::updateTypes(kvType&, kvType&, kvType&, kvType&) const {}

void kvFunc::updateChannels(int&, int&) const {}

void kvFunc::updatePlanes(bool&, bool&) const {}
