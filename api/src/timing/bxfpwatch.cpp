#include "timing/bxfpwatch.h"

#include "output/bxostream.h"
#include "system/bxprobes.h"

#include <cstdint>
#include <iterator>
#include <span>

namespace {

/** A bit pattern and its name. */
struct BitName {
    int bits;
    const char* name;
};

/** Status flags of the x87 and of SSE. A flag whose name begins with "?" is bad. */
constexpr BitName statusFlags[] = {{0x1, "?Invalid "},  {0x2, "?Denormal "},   {0x4, "?Zerodivide "},
                                   {0x8, "?Overflow "}, {0x10, "?Underflow "}, {0x20, "_Inexact "}};
constexpr BitName masks87[] = {{0x1, "Invalid "},  {0x2, "Denormal "},   {0x4, "Zerodivide "},
                               {0x8, "Overflow "}, {0x10, "Underflow "}, {0x20, "Inexact "}};
constexpr BitName masksSSX[] = {{0x80, "Invalid "},   {0x100, "Denormal "},  {0x200, "Zerodivide "},
                                {0x400, "Overflow "}, {0x800, "Underflow "}, {0x1000, "Inexact "}};
constexpr BitName precision87[] = {{0x0, "24 "}, {0x200, "53 "}, {0x300, "64 "}};
constexpr BitName rounding87[] = {{0xC00, "Zero "}, {0x800, "Up "}, {0x400, "Down "}, {0x0, "Near "}};
constexpr BitName roundingSSX[] = {{0x6000, "Zero "}, {0x4000, "Up "}, {0x2000, "Down "}, {0x0, "Near "}};
constexpr BitName flushSSX[] = {{0x8000, "FlushToZero "}, {0x0, "NoFlushToZero "}};

/** All status flags, and the bad ones. */
constexpr int allFlags = 0x3F;
constexpr int badFlags = [] {
    int flags = 0;
    for (const BitName& flag : statusFlags)
        if (flag.name[0] == '?')
            flags |= flag.bits;
    return flags;
}();

constexpr const char* noSSX = "cpu has not SSX extension";

/** Fields that the default settings cover: masks, precision and rounding; all but denormals-are-zero. */
constexpr unsigned int controlFields87 = 0xF3F;
constexpr unsigned int controlFieldsSSX = 0xFFBF;

/** The names of all bits that are set. */
bxString setBits(int value, std::span<const BitName> names) {
    bxString text;
    for (const BitName& row : names)
        if (value & row.bits)
            text << row.name;
    return text;
}

/** The name of the pattern in a field. */
bxString field(int value, int mask, std::span<const BitName> names) {
    for (const BitName& row : names)
        if ((value & mask) == row.bits)
            return row.name;
    return {};
}

const tsSSXBase& ssx() {
    static const tsSSXBase base; // asked once: CPUID is slow under a hypervisor
    return base;
}

bxString statusText(int status) {
    const bxString text = setBits(status, statusFlags);
    return text.empty() ? bxString("Ok") : text;
}

} // namespace

unsigned int bx_set_cw_fpu(unsigned int value, unsigned int mask) {
    std::uint16_t old;
    __asm__ volatile("fnstcw %0" : "=m"(old));
    const auto word = static_cast<std::uint16_t>((old & ~mask) | (value & mask));
    if (word != old) // the processor would stop for it
        __asm__ volatile("fldcw %0" : : "m"(word));
    return old;
}

unsigned int bx_get_sw_fpu() {
    std::uint16_t status;
    __asm__ volatile("fnstsw %0" : "=m"(status));
    return status;
}

unsigned int bx_clear_fpu() {
    constexpr unsigned int cleared = 0x80FF; // what FNCLEX, slow as it is, would clear
    const unsigned int status = bx_get_sw_fpu();
    if (status & cleared)
        __asm__ volatile("fnclex");
    return status;
}

unsigned int bx_set_ssx(unsigned int value, unsigned int mask) {
    const unsigned int old = bx_get_ssx();
    const unsigned int word = (old & ~mask) | (value & mask);
    if (word != old)
        __asm__ volatile("ldmxcsr %0" : : "m"(word));
    return old;
}

unsigned int bx_get_ssx() {
    unsigned int word;
    __asm__ volatile("stmxcsr %0" : "=m"(word));
    return word;
}

int ts87Base::Exception = 0x3B;
int ts87Base::Precision = 0x200;
int ts87Base::Rounding = 0x0;
int tsSSXBase::Exception = 0x1F80;
int tsSSXBase::FlushZero = 0x8000;
int tsSSXBase::Rounding = 0x0;

void ts87Base::setDefault() {
    bx_clear_fpu();
    bx_set_cw_fpu(static_cast<unsigned int>(Exception | Precision | Rounding), controlFields87);
}

bxString ts87Base::strSW(int sw) {
    return statusText(sw);
}

bxString ts87Base::strCW(int cw) {
    return field(cw, 0xC00, rounding87) + field(cw, 0x300, precision87) + setBits(cw, masks87);
}

tsSSXBase::tsSSXBase() : m_hasSSX(zor_is_ssx_extension() != 0) {}

void tsSSXBase::setDefault() const {
    if (m_hasSSX)
        bx_set_ssx(static_cast<unsigned int>(Rounding | Exception | FlushZero), controlFieldsSSX);
}

void tsSSXBase::clearFlags() const {
    if (m_hasSSX)
        bx_set_ssx(0, allFlags);
}

int tsSSXBase::get() const {
    return m_hasSSX ? static_cast<int>(bx_get_ssx()) : 0;
}

bxString tsSSXBase::strExceptionState(int mxcsr) const {
    return m_hasSSX ? statusText(mxcsr) : bxString(noSSX);
}

bxString tsSSXBase::strCW(int mxcsr) const {
    if (!m_hasSSX)
        return noSSX;
    return field(mxcsr, 0x6000, roundingSSX) + setBits(mxcsr, masksSSX) + field(mxcsr, 0x8000, flushSSX);
}

void bx87::init() {
    m_cw = m_sw = 0;
    ts87Base::setDefault();
}

void bx87::clear() {
    m_cw = m_sw = 0;
    bx_clear_fpu();
}

void bx87::start() {
    bx_clear_fpu();
}

void bx87::stop() {
    m_sw |= static_cast<int>(bx_get_sw_fpu());
    m_cw |= static_cast<int>(bx_set_cw_fpu(0, 0));
}

bool bx87::badStatus() const {
    return (m_sw & badFlags) != 0;
}

void bxSSX::init() {
    m_mxcsr = 0;
    m_base.setDefault();
}

void bxSSX::clear() {
    m_mxcsr = 0;
    m_base.clearFlags();
}

void bxSSX::stop() {
    m_mxcsr |= m_base.get();
}

void bxSSX::resume() const {
    if (m_base.hasSSX())
        bx_set_ssx(static_cast<unsigned int>(m_mxcsr), allFlags);
}

bool bxSSX::badStatus() const {
    return (m_mxcsr & badFlags) != 0;
}

constinit bx87 g_ctrl87;

bxSSX& bxSSXWatch() {
    static bxSSX watch;
    return watch;
}

void bxInitCtrlStatus() {
    g_ctrl87.init();
    g_ssx.init();
}

void bxClearCtrlStatus() {
    g_ctrl87.clear();
    g_ssx.clear();
}

bool bxBadCtrlStatus(bool& bad87, bool& badSSX) {
    bad87 = g_ctrl87.badStatus();
    badSSX = g_ssx.badStatus();
    return bad87 || badSSX;
}

bool bxBadCtrlStatus() {
    return g_ctrl87.badStatus() || g_ssx.badStatus();
}

void bxPrintCtrlStatus(bool bad87, bool badSSX) {
    if (bad87)
        g_ostrm << WARN << "-- Status    87: " << g_ctrl87.strSW() << "\n" << endMessage;
    if (badSSX)
        g_ostrm << WARN << "-- Status    SSX: " << g_ssx.strExceptionState() << "\n" << endMessage;
}

void bxResetFpState() {
    constexpr unsigned int denormalsAreZero = 0x40;
    __asm__ volatile("fninit");
    ts87Base::setDefault();
    ssx().setDefault();
    if (ssx().hasSSX())
        bx_set_ssx(0, denormalsAreZero);
}
