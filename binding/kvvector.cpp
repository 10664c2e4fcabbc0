#include "kvvector.h"

#include "data/bxalloc.h"
#include "data/bxplacement.h"
#include "kvelements.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

unsigned int kvVector::m_seed = 7;

namespace {

const double floatBound = 0.5 * std::sqrt(static_cast<double>(std::numeric_limits<float>::max()));
const double doubleBound = 0.5 * std::sqrt(std::numeric_limits<double>::max());
constexpr double twoTo63 = 9223372036854775808.0;

struct Range {
    double min, max;
};

Range rangeOf(kvType type) {
    switch (kvComponent(type)) {
    case kv8u:
        return {0, 255};
    case kv16u:
        return {0, 65535};
    case kv32u:
        return {0, 4294967295.0};
    case kv64u:
        return {0, twoTo63};
    case kv8s:
        return {-128, 127};
    case kv16s:
        return {-32768, 32767};
    case kv32s:
        return {-2147483648.0, 2147483647.0};
    case kv64s:
        return {-twoTo63, twoTo63};
    case kv32f:
        return {-floatBound, floatBound};
    case kv64f:
        return {-doubleBound, doubleBound};
    default:
        return {0, 1};
    }
}

} // namespace

kvVector::~kvVector() {
    kvVector::deleteVector();
}

void kvVector::init(kvType type) {
    deleteVector();
    m_type = type;
    m_work = false;
}

void kvVector::init(const kvFunc& func, int arg) {
    init(func.type(arg));
}

void kvVector::init(const kvFunc& func, kvArg arg) {
    init(func.type(arg));
}

bool kvVector::createVector(int len, int align, void* owner) {
    const long long bytes = static_cast<long long>(len) * kvElementSize(m_type);
    if (bytes != static_cast<int>(bytes)) {
        deleteVector();
        return bxDataError(bxString() << len << " elements of " << kvElementSize(m_type) << " bytes");
    }
    if (!allocateVector(static_cast<int>(bytes), align, owner))
        return false;
    m_length = len;
    setConst();
    return true;
}

bool kvVector::createVector(int len, SetMode mode, double a, double b) {
    return createVectorExt(len, -1, mode, a, b);
}

bool kvVector::createVectorExt(int len, int align, SetMode mode, double a, double b) {
    if (!createVector(len, align))
        return false;
    setVector(mode, a, b);
    return true;
}

bool kvVector::allocateVector(int bytes, int align, void* owner) {
    deleteVector();
    if (bytes <= 0)
        return memError(bytes);
    m_owner = owner ? owner : static_cast<bxObject*>(this);
    m_data = g_placement.allocate(bytes, align < 0 ? g_placement.ruledAlign(kvElementSize(m_type)) : align,
                                  m_owner);
    if (!m_data)
        return false;
    std::memset(m_data, 0, static_cast<std::size_t>(bytes));
    setTypedPointer(m_data);
    return true;
}

void kvVector::deleteVector() {
    // After a fault the harness frees what the test left: the address may be somebody else's by now.
    void* owner = nullptr;
    if (m_data && bxMallocInfo(m_data, nullptr, &owner) && owner == m_owner)
        bxFree(m_data);
    m_data = nullptr;
    m_length = 0;
    setTypedPointer(nullptr);
    kvVector::deleteReservedCopy();
}

void kvVector::setTypedPointer(void* data) {
    const auto set = [&](auto*& pointer, kvType type) {
        pointer = m_type == type ? static_cast<std::remove_reference_t<decltype(pointer)>>(data) : nullptr;
    };
    set(p8u, kv8u);
    set(p16u, kv16u);
    set(p32u, kv32u);
    set(p64u, kv64u);
    set(p8s, kv8s);
    set(p16s, kv16s);
    set(p32s, kv32s);
    set(p64s, kv64s);
    set(p8sc, kv8sc);
    set(p16sc, kv16sc);
    set(p16uc, kv16uc);
    set(p32sc, kv32sc);
    set(p64sc, kv64sc);
    set(p32f, kv32f);
    set(p64f, kv64f);
    set(p32fc, kv32fc);
    set(p64fc, kv64fc);
}

bool kvVector::reserveCopy() {
    if (!m_data)
        return false;
    deleteReservedCopy();
    m_reserved = std::calloc(1, static_cast<std::size_t>(size()));
    if (m_reserved)
        std::memcpy(m_reserved, m_data, static_cast<std::size_t>(size()));
    return m_reserved != nullptr;
}

bool kvVector::setReservedCopy() {
    if (!m_data || !m_reserved)
        return false;
    std::memcpy(m_data, m_reserved, static_cast<std::size_t>(size()));
    return true;
}

void kvVector::deleteReservedCopy() {
    std::free(m_reserved);
    m_reserved = nullptr;
}

bxString kvVector::objectInfo() const {
    bxString text("Vector ");
    text << kvFunc::typeToString(m_type) << " len=" << m_length;
    return text;
}

int kvVector::size() const {
    return m_length * kvElementSize(m_type);
}

void* kvVector::getPointerAt(int i) const {
    return m_data ? static_cast<char*>(m_data) + static_cast<std::ptrdiff_t>(i) * kvElementSize(m_type)
                  : nullptr;
}

void kvVector::setConst() {
    setVector(smDefault, 0, 0);
}

void kvVector::setConst(double re, double im) {
    setVector(smConst, re, im);
}

void kvVector::setMinValue() {
    setVector(smMin, 0, 0);
}

void kvVector::setMaxValue() {
    setVector(smMax, 0, 0);
}

void kvVector::setJaehne() {
    setJaehne(kvIsFloat(m_type) ? 1.0 : (getMaxValue(m_type) - getMinValue(m_type)) * 0.5);
}

void kvVector::setJaehne(double magn) {
    if (m_data)
        kv::fillJaehne({m_type, m_data, m_length}, magn);
}

void kvVector::setSequence(double a, double b) {
    if (m_length == 1)
        setConst(a, 0);
    else if (m_length > 1)
        setSequence(a, b, (b - a) / (m_length - 1), true);
}

void kvVector::setSequence(double start, double end, double step, bool wrap) {
    if (m_data)
        kv::fillSequence({m_type, m_data, m_length}, start, end, step, wrap);
}

void kvVector::setRandom() {
    setVector(smRandom, 0, 0);
}

void kvVector::setRandom(double lo, double hi) {
    if (m_data)
        kv::fillRandom({m_type, m_data, m_length}, lo, hi, m_seed);
}

void kvVector::setRandom(double lo, double hi, unsigned int seed) {
    m_seed = seed;
    setRandom(lo, hi);
}

void kvVector::setVector(SetMode mode, double a, double b) {
    if (m_data)
        kv::fill({m_type, m_data, m_length}, mode, a, b, m_seed);
}

void kvVector::setIndex(int i, SetMode mode, double a, double b) {
    if (m_data && i >= 0 && i < m_length)
        kv::fill({m_type, getPointerAt(i), 1}, mode, a, b, m_seed);
}

double kvVector::getIndex(int i) const {
    double re = 0, im = 0;
    getIndex(i, re, im);
    return re;
}

void kvVector::getIndex(int i, double& re, double& im) const {
    re = im = 0;
    if (!m_data || i < 0 || i >= m_length)
        return;
    kv::withComponents(m_type, getPointerAt(i), [&](const auto* element) {
        re = static_cast<double>(element[0]);
        im = kvIsComplex(m_type) ? static_cast<double>(element[1]) : 0.0;
    });
}

double kvVector::getMinValue(kvType type) {
    return rangeOf(type).min;
}

double kvVector::getMaxValue(kvType type) {
    return rangeOf(type).max;
}

double kvVector::getMinAbsValue(kvType type) {
    if (kvComponent(type) == kv32f)
        return static_cast<double>(std::numeric_limits<float>::min());
    if (kvComponent(type) == kv64f)
        return std::numeric_limits<double>::min();
    return kvIsInteger(type) ? 1 : 0;
}
