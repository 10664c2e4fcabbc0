#include "decoder.h"

#include <Zydis/Zydis.h>
#include <algorithm>
#include <array>

namespace {

/** Numbers of `Instruction::reads`: general registers from 0, vectors, masks, and the rest together. */
enum : int { vectors = 16, masks = 48, flagsRegister = 56, x87Registers = 57 };

/** Keeps what the decoder of a call needs. */
class CallDecoder {
  public:
    explicit CallDecoder(const SteppedCall& call)
        : m_call(call),
          m_long(std::find(call.registers.begin(), call.registers.end(), "rip") != call.registers.end()),
          m_mode(m_long ? ZYDIS_MACHINE_MODE_LONG_64 : ZYDIS_MACHINE_MODE_LEGACY_32) {
        ZydisDecoderInit(&m_decoder, m_mode, m_long ? ZYDIS_STACK_WIDTH_64 : ZYDIS_STACK_WIDTH_32);
        ZydisFormatterInit(&m_formatter, ZYDIS_FORMATTER_STYLE_INTEL);
    }

    Instruction decode(std::uint64_t address, const std::vector<std::uint8_t>& bytes);

  private:
    using Operands = std::array<ZydisDecodedOperand, ZYDIS_MAX_OPERAND_COUNT>;

    int registerIndex(ZydisRegister reg) const;
    int dependency(ZydisRegister reg) const;
    void takeRegister(Instruction& result, const ZydisDecodedOperand& operand, bool other) const;
    void takeMemory(Instruction& result, const ZydisDecodedOperand& operand, bool touches) const;
    void takeFlags(Instruction& result) const;
    void classify(Instruction& result);
    void classifyVector(Instruction& result, int bits, bool x87);
    Group generalGroup(const Instruction& result) const;
    int vectorBits() const;

    const SteppedCall& m_call;
    bool m_long;
    ZydisMachineMode m_mode;
    ZydisDecoder m_decoder{};
    ZydisFormatter m_formatter{};
    ZydisDecodedInstruction m_raw{};
    Operands m_operands{};
};

/** Index in the step file. */
int CallDecoder::registerIndex(ZydisRegister reg) const {
    if (reg == ZYDIS_REGISTER_NONE)
        return -1;
    const char* const name = ZydisRegisterGetString(ZydisRegisterGetLargestEnclosing(m_mode, reg));
    const auto found = std::find(m_call.registers.begin(), m_call.registers.end(), name ? name : "");
    return found == m_call.registers.end() ? -1 : static_cast<int>(found - m_call.registers.begin());
}

int CallDecoder::dependency(ZydisRegister reg) const {
    const auto number = ZydisRegisterGetId(ZydisRegisterGetLargestEnclosing(m_mode, reg));
    switch (ZydisRegisterGetClass(reg)) {
    case ZYDIS_REGCLASS_GPR8:
    case ZYDIS_REGCLASS_GPR16:
    case ZYDIS_REGCLASS_GPR32:
    case ZYDIS_REGCLASS_GPR64:
        return number & 15;
    case ZYDIS_REGCLASS_XMM:
    case ZYDIS_REGCLASS_YMM:
    case ZYDIS_REGCLASS_ZMM:
        return vectors + (number & 31);
    case ZYDIS_REGCLASS_MASK:
        return masks + (number & 7);
    case ZYDIS_REGCLASS_FLAGS:
        return flagsRegister;
    case ZYDIS_REGCLASS_X87:
    case ZYDIS_REGCLASS_MMX:
        return x87Registers;
    default:
        return -1;
    }
}

void addOnce(std::vector<int>& list, int number) {
    if (number >= 0 && std::find(list.begin(), list.end(), number) == list.end())
        list.push_back(number);
}

/** \param other  reads of its own are left out: the result does not depend on them */
void CallDecoder::takeRegister(Instruction& result, const ZydisDecodedOperand& operand, bool other) const {
    const ZydisRegister reg = operand.reg.value;
    const int number = dependency(reg);
    const bool writes = (operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE) != 0;
    const auto regClass = ZydisRegisterGetClass(reg);
    // A part of a register, or a write that may not happen, keeps the rest.
    const bool keepsRest = writes && (regClass == ZYDIS_REGCLASS_GPR8 || regClass == ZYDIS_REGCLASS_GPR16 ||
                                      (operand.actions & ZYDIS_OPERAND_ACTION_CONDWRITE) != 0);
    if (!other && ((operand.actions & ZYDIS_OPERAND_ACTION_MASK_READ) != 0 || keepsRest))
        addOnce(result.reads, number);
    if (writes)
        addOnce(result.writes, number);
}

void CallDecoder::takeMemory(Instruction& result, const ZydisDecodedOperand& operand, bool touches) const {
    const ZydisDecodedOperandMem& memory = operand.mem;
    if (memory.type == ZYDIS_MEMOP_TYPE_AGEN) {
        for (const ZydisRegister reg : {memory.base, memory.index})
            addOnce(result.reads, reg == ZYDIS_REGISTER_NONE ? -1 : dependency(reg));
        return;
    }
    if (!touches)
        return;
    Access access;
    const bool relative = memory.base == ZYDIS_REGISTER_RIP || memory.base == ZYDIS_REGISTER_EIP;
    access.base = relative ? -1 : registerIndex(memory.base);
    access.inVector = memory.type == ZYDIS_MEMOP_TYPE_VSIB;
    access.index = access.inVector ? -1 : registerIndex(memory.index);
    access.scale = memory.scale;
    access.displacement = static_cast<std::uint64_t>(memory.disp.value) + (relative ? result.next() : 0);
    access.threadData = memory.segment == (m_long ? ZYDIS_REGISTER_FS : ZYDIS_REGISTER_GS);
    const int count = access.inVector ? std::max<int>(1, m_operands[0].element_count) : 1;
    access.bytes = operand.size / 8 * count;
    access.read = (operand.actions & ZYDIS_OPERAND_ACTION_MASK_READ) != 0;
    access.write = (operand.actions & ZYDIS_OPERAND_ACTION_MASK_WRITE) != 0;
    for (const ZydisRegister reg : {memory.base, memory.index})
        addOnce(result.addressReads, reg == ZYDIS_REGISTER_NONE ? -1 : dependency(reg));
    result.accesses.push_back(access);
}

void CallDecoder::takeFlags(Instruction& result) const {
    if (!m_raw.cpu_flags)
        return;
    if (m_raw.cpu_flags->tested & ~ZYDIS_CPUFLAG_DF)
        addOnce(result.reads, flagsRegister);
    if (m_raw.cpu_flags->modified || m_raw.cpu_flags->set_0 || m_raw.cpu_flags->set_1)
        addOnce(result.writes, flagsRegister);
}

/** The widest vector register among the operands; 0 for none. */
int CallDecoder::vectorBits() const {
    int bits = 0;
    for (int i = 0; i < m_raw.operand_count_visible; ++i) {
        const ZydisDecodedOperand& operand = m_operands[static_cast<std::size_t>(i)];
        if (operand.type != ZYDIS_OPERAND_TYPE_REGISTER)
            continue;
        switch (ZydisRegisterGetClass(operand.reg.value)) {
        case ZYDIS_REGCLASS_XMM:
            bits = std::max(bits, 128);
            break;
        case ZYDIS_REGCLASS_YMM:
            bits = std::max(bits, 256);
            break;
        case ZYDIS_REGCLASS_ZMM:
            bits = std::max(bits, 512);
            break;
        case ZYDIS_REGCLASS_MMX:
            bits = std::max(bits, 64);
            break;
        default:
            break;
        }
    }
    return bits;
}

Group CallDecoder::generalGroup(const Instruction& result) const {
    switch (m_raw.meta.category) {
    case ZYDIS_CATEGORY_COND_BR:
    case ZYDIS_CATEGORY_UNCOND_BR:
        return Group::branch;
    case ZYDIS_CATEGORY_CALL:
        return Group::call;
    case ZYDIS_CATEGORY_RET:
        return Group::leave;
    case ZYDIS_CATEGORY_STRINGOP:
        return Group::string;
    case ZYDIS_CATEGORY_PUSH:
        return Group::store;
    case ZYDIS_CATEGORY_POP:
        return Group::load;
    case ZYDIS_CATEGORY_DATAXFER:
        if (result.accesses.empty())
            return Group::move;
        return result.accesses.front().write ? Group::store : Group::load;
    case ZYDIS_CATEGORY_NOP:
    case ZYDIS_CATEGORY_WIDENOP:
    case ZYDIS_CATEGORY_PREFETCH:
    case ZYDIS_CATEGORY_SYSTEM:
    case ZYDIS_CATEGORY_MISC:
        return result.name == "lea" ? Group::integer : Group::other;
    default:
        break;
    }
    if (result.name == "mul" || result.name == "imul" || result.name == "mulx")
        return Group::integerMultiply;
    return result.name == "div" || result.name == "idiv" ? Group::integerDivide : Group::integer;
}

int elementBits(Precision precision) {
    switch (precision) {
    case Precision::half:
        return 16;
    case Precision::single:
        return 32;
    case Precision::full:
        return 64;
    case Precision::extended:
        return 80;
    case Precision::none:
        break;
    }
    return 0;
}

void CallDecoder::classifyVector(Instruction& result, int bits, bool x87) {
    const bool newer = result.name.starts_with('v');
    const std::string_view name = std::string_view(result.name).substr(newer ? 1 : 0);
    const NamedKind named = x87 ? x87Kind(name) : vectorKind(name);
    const int number = elementBits(named.precision);
    const int width = named.scalar ? number : bits;
    result.kind = {named.group, named.precision, width};
    result.operations = named.operations * (number > 0 ? width / number : 0);
    if (named.group == Group::move && !result.accesses.empty()) {
        const Access& access = result.accesses.front();
        result.kind = {access.write ? Group::store : Group::load, named.precision, 8 * access.bytes};
    }
    if (named.group == Group::shuffle) {
        // One number from memory into all places is a load like any other.
        const bool spreads = name.find("broadcast") != std::string_view::npos && !result.accesses.empty();
        result.kind = {spreads ? Group::load : Group::shuffle, Precision::none,
                       spreads ? 8 * result.accesses.front().bytes : bits};
    }
    // What moves bits does not care for the numbers that they are.
    if (result.kind.group != Group::floatAdd && result.kind.group != Group::floatMultiply &&
        result.kind.group != Group::multiplyAdd && result.kind.group != Group::floatDivide)
        result.kind.precision = Precision::none;
}

void CallDecoder::classify(Instruction& result) {
    const int bits = vectorBits();
    const bool x87 = m_raw.meta.category == ZYDIS_CATEGORY_X87_ALU;
    if (bits > 0 || x87)
        classifyVector(result, bits, x87);
    else
        result.kind = {generalGroup(result), Precision::none, 0};
    const Group group = result.kind.group;
    result.endsBlock = group == Group::branch || group == Group::call || group == Group::leave;
}

bool touchesMemory(const ZydisDecodedInstruction& raw) {
    const auto category = raw.meta.category;
    return category != ZYDIS_CATEGORY_NOP && category != ZYDIS_CATEGORY_WIDENOP &&
           category != ZYDIS_CATEGORY_PREFETCH;
}

/** The old value of a register does not matter where it is taken from itself. */
bool makesZero(const ZydisDecodedInstruction& raw,
               const std::array<ZydisDecodedOperand, ZYDIS_MAX_OPERAND_COUNT>& operands,
               std::string_view name) {
    if (name.find("xor") == std::string_view::npos && !name.starts_with("sub") && !name.starts_with("psub") &&
        !name.starts_with("vpsub"))
        return false;
    const int count = raw.operand_count_visible;
    if (count < 2)
        return false;
    const auto& last = operands[static_cast<std::size_t>(count - 1)];
    const auto& before = operands[static_cast<std::size_t>(count - 2)];
    return last.type == ZYDIS_OPERAND_TYPE_REGISTER && before.type == ZYDIS_OPERAND_TYPE_REGISTER &&
           last.reg.value == before.reg.value;
}

Instruction CallDecoder::decode(std::uint64_t address, const std::vector<std::uint8_t>& bytes) {
    if (!ZYAN_SUCCESS(
            ZydisDecoderDecodeFull(&m_decoder, bytes.data(), bytes.size(), &m_raw, m_operands.data())))
        throw ExplainError("an instruction that the disassembler does not know, in " + m_call.function);
    Instruction result;
    result.address = address;
    result.length = m_raw.length;
    result.name = ZydisMnemonicGetString(m_raw.mnemonic);
    std::array<char, 256> shown{};
    ZydisFormatterFormatInstruction(&m_formatter, &m_raw, m_operands.data(), m_raw.operand_count_visible,
                                    shown.data(), shown.size(), address, nullptr);
    result.text = shown.data();
    const bool zero = makesZero(m_raw, m_operands, result.name);
    const bool touches = touchesMemory(m_raw);
    for (int i = 0; i < m_raw.operand_count; ++i) {
        const ZydisDecodedOperand& operand = m_operands[static_cast<std::size_t>(i)];
        if (operand.type == ZYDIS_OPERAND_TYPE_REGISTER)
            takeRegister(result, operand, zero);
        else if (operand.type == ZYDIS_OPERAND_TYPE_MEMORY)
            takeMemory(result, operand, touches);
    }
    takeFlags(result);
    classify(result);
    constexpr auto repeated = ZYDIS_ATTRIB_HAS_REP | ZYDIS_ATTRIB_HAS_REPE | ZYDIS_ATTRIB_HAS_REPNE;
    result.repeats = (m_raw.attributes & repeated) != 0 && result.kind.group == Group::string;
    if (result.repeats)
        result.counter = registerIndex(m_long ? ZYDIS_REGISTER_RCX : ZYDIS_REGISTER_ECX);
    return result;
}

long long sum(const std::vector<Access>& accesses, bool Access::*wanted) {
    long long bytes = 0;
    for (const Access& access : accesses)
        bytes += access.*wanted ? access.bytes : 0;
    return bytes;
}

} // namespace

std::uint64_t Access::address(const StepReader& step, std::uint64_t thread) const {
    std::uint64_t at = displacement + (threadData ? thread : 0);
    if (base >= 0)
        at += step.value(base);
    if (index >= 0)
        at += step.value(index) * static_cast<std::uint64_t>(scale);
    return at;
}

long long Instruction::bytesRead() const {
    return sum(accesses, &Access::read);
}

long long Instruction::bytesWritten() const {
    return sum(accesses, &Access::write);
}

std::map<std::uint64_t, Instruction> decode(const SteppedCall& call) {
    CallDecoder decoder(call);
    std::map<std::uint64_t, Instruction> instructions;
    for (const auto& [address, bytes] : call.code)
        instructions.emplace(address, decoder.decode(address, bytes));
    return instructions;
}
