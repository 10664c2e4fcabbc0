/** \file
 * What a call did, step by step: the registers in front of each instruction.
 */
#ifndef BXSTEPLOG_H
#define BXSTEPLOG_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sys/ucontext.h>
#include <vector>

/**
 * Takes down the general registers and the instruction pointer in front of each step of a call, as those that
 * changed since the step before. Its memory is reserved beforehand, since a signal handler fills it; what is
 * not used of it is never touched.
 *
 * A step is a word of 32 bits, bit i of which tells that register i of `names` changed, and behind it the
 * value of each that did, 64 bits.
 */
class bxStepLog {
  public:
#if defined(__x86_64__)
    static constexpr std::array places = {REG_R8,  REG_R9,  REG_R10, REG_R11, REG_R12, REG_R13,
                                          REG_R14, REG_R15, REG_RDI, REG_RSI, REG_RBP, REG_RBX,
                                          REG_RDX, REG_RAX, REG_RCX, REG_RSP, REG_RIP};
    static constexpr const char* names = "r8 r9 r10 r11 r12 r13 r14 r15 rdi rsi rbp rbx rdx rax rcx rsp rip";
#else
    static constexpr std::array places = {REG_EDI, REG_ESI, REG_EBP, REG_EBX, REG_EDX,
                                          REG_EAX, REG_ECX, REG_ESP, REG_EIP};
    static constexpr const char* names = "edi esi ebp ebx edx eax ecx esp eip";
#endif

    /** Room for as many steps; `full` from the start where it cannot be had. */
    explicit bxStepLog(long long steps);
    ~bxStepLog();
    bxStepLog(const bxStepLog&) = delete;
    bxStepLog& operator=(const bxStepLog&) = delete;

    void clear();
    /** Adds a step; may be called by a signal handler. */
    void add(const greg_t* registers);

    long long steps() const {
        return m_steps;
    }
    /** Whether steps were left out, for want of room. */
    bool full() const {
        return m_full;
    }
    const char* data() const {
        return m_data;
    }
    std::size_t bytes() const {
        return m_bytes;
    }
    /** The addresses of the instructions, ascending, each once. */
    std::vector<std::uintptr_t> addresses() const;

  private:
    using Registers = std::array<std::uint64_t, places.size()>;
    static constexpr std::size_t mostOfStep = sizeof(std::uint32_t) + sizeof(Registers);

    char* m_data = nullptr;
    std::size_t m_capacity = 0;
    std::size_t m_bytes = 0;
    long long m_steps = 0;
    bool m_full = true;
    Registers m_last{};
};

inline void bxStepLog::add(const greg_t* registers) {
    if (m_full || m_capacity - m_bytes < mostOfStep) {
        m_full = true;
        return;
    }
    std::uint32_t changed = 0;
    char* at = m_data + m_bytes + sizeof changed;
    for (std::size_t i = 0; i < places.size(); ++i) {
        const auto value = static_cast<std::uintptr_t>(registers[places[i]]);
        if (value == m_last[i] && m_steps > 0)
            continue;
        m_last[i] = value;
        changed |= 1U << i;
        std::memcpy(at, &m_last[i], sizeof m_last[i]);
        at += sizeof m_last[i];
    }
    std::memcpy(m_data + m_bytes, &changed, sizeof changed);
    m_bytes = static_cast<std::size_t>(at - m_data);
    ++m_steps;
}

#endif
