// benchex-explain's parts, on code whose instructions are written down here.
#include "explanation.h"
#include "framework/bxstepfile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

extern "C" {
alignas(64) float explained_data[16];
int explained();
int explained_inner();
int explained_strings();
}

// 10 times 8 instructions, 4 in front of and 1 behind them; 10 times 2 of the inner function.
__asm__(R"(
    .pushsection .text
    .type explained, @function
explained:
    lea explained_data(%rip), %rdx
    mov $10, %ecx
    xorps %xmm0, %xmm0
    xorps %xmm1, %xmm1
1:  movaps (%rdx), %xmm2
    mulss %xmm1, %xmm2
    addps 16(%rdx), %xmm0
    movups %xmm0, 36(%rdx)
    pshufd $0, %xmm2, %xmm3
    call explained_inner
    dec %ecx
    jnz 1b
    ret
    .size explained, . - explained
    .type explained_inner, @function
explained_inner:
    nop
    ret
    .size explained_inner, . - explained_inner
    .type explained_strings, @function
explained_strings:
    push %rdi
    lea explained_data(%rip), %rsi
    lea 32(%rsi), %rdi
    mov $20, %ecx
    rep movsb
    rep movsb
    lea explained_data(%rip), %rdi
    xor %eax, %eax
    mov $16, %ecx
    repne scasb
    pop %rdi
    ret
    .size explained_strings, . - explained_strings
    .popsection
)");

namespace {

SteppedCall stepped(int (*function)()) {
    bxStepLog log(1000);
    const bxInstructionCount count = bxCountInstructions(function, 1000, &log);
    bxPreciseFigure figure;
    figure.clocks = 25;
    static int files = 0;
    const std::string name = std::filesystem::temp_directory_path() /
                             ("explain_test" + std::to_string(getpid()) + "." + std::to_string(++files));
    EXPECT_TRUE(bxStepFile::open(name.c_str()));
    EXPECT_TRUE(bxStepFile::add({"explained", "Len=16", 30, count, figure, &log}));
    std::ifstream input(name, std::ios::binary);
    std::vector<SteppedCall> calls = readSteps(input, name);
    std::filesystem::remove(name);
    return calls.at(0);
}

TEST(Explain, CountsWhatWasExecuted) {
    SteppedCall call = stepped(explained);
    const auto data = reinterpret_cast<std::uint64_t>(explained_data);
    call.blocks.push_back({data, data + sizeof explained_data, 0, "data"});
    EXPECT_EQ(call.instructions(), 105);
    const Explanation e = explain(call, 2);
    const Profile& p = e.profile;
    EXPECT_EQ(p.instructions, 105);
    const std::map<std::string, long long> expected = {{"integer", 11},
                                                       {"move", 1},
                                                       {"logic 128", 2},
                                                       {"load 128", 10},
                                                       {"multiply float 32", 10},
                                                       {"add float 128", 10},
                                                       {"store 128", 10},
                                                       {"shuffle 128", 10},
                                                       {"call", 10},
                                                       {"branch", 10},
                                                       {"other", 10},
                                                       {"return", 11}};
    std::map<std::string, long long> mix;
    for (const auto& [kind, count] : p.mix)
        mix[text(kind)] = count;
    EXPECT_EQ(mix, expected);
    EXPECT_EQ(p.operations, 10 + 40);
    EXPECT_EQ(p.branchesTaken, 9);
    EXPECT_EQ(p.loads, (std::map<int, long long>{{8, 11}, {16, 20}}));
    EXPECT_EQ(p.stores, (std::map<int, long long>{{8, 10}, {16, 10}}));
    ASSERT_EQ(p.memory.size(), 2U);
    EXPECT_EQ(p.memory[0].name, "data");
    EXPECT_EQ(p.memory[0].bytesRead, 320);
    EXPECT_EQ(p.memory[0].bytesWritten, 160);
    EXPECT_EQ(p.memory[0].lines, 1);
    EXPECT_EQ(p.memory[1].name, "stack");

    ASSERT_EQ(e.functions.size(), 2U);
    EXPECT_EQ(e.functions[0].place.function, "explained");
    EXPECT_EQ(e.functions[0].instructions, 85);
    EXPECT_EQ(e.functions[1].place.function, "explained_inner");
    EXPECT_EQ(e.functions[1].calls, 10);
    ASSERT_EQ(e.blocks.size(), 2U);
    EXPECT_EQ(e.blocks[0].count.executions, 10);
    EXPECT_EQ(e.blocks[0].count.instructions, 6);
    EXPECT_EQ(e.blocks[0].code[1].text, "mulss xmm2, xmm1");

    EXPECT_NEAR(e.instructionsPerClock(), 4.2, 1e-9);
    std::ostringstream shown;
    writeText(shown, e);
    EXPECT_NE(shown.str().find("explained Len=16\n  105 instructions, 25 core clocks, 4.2 a clock\n"),
              std::string::npos)
        << shown.str();
    EXPECT_EQ(toJson(e)["operationsDeclared"], 30);
}

TEST(Explain, RepeatedStringInstructions) {
    // Nine instructions around them; 20 iterations of the first, none of the second, whose count is 0, and
    // six of the third, up to the byte that is equal to that in the accumulator.
    auto* const bytes = reinterpret_cast<char*>(explained_data);
    std::fill_n(bytes, sizeof explained_data, '\1');
    bytes[5] = '\0';
    SteppedCall call = stepped(explained_strings);
    const auto data = reinterpret_cast<std::uint64_t>(explained_data);
    call.blocks.push_back({data, data + sizeof explained_data, 0, "data"});
    const Profile p = profileOf(call);
    EXPECT_EQ(p.instructions, 12);
    EXPECT_EQ(p.steps, 9 + 20 + 1 + 6);
    EXPECT_EQ(p.mix.at({Group::string}), 3);
    EXPECT_EQ(p.loads, (std::map<int, long long>{{8, 2}})) << "pop and return, no iterations";
    EXPECT_EQ(p.stores, (std::map<int, long long>{{8, 1}}));
    ASSERT_EQ(p.memory.size(), 2U);
    EXPECT_EQ(p.memory[0].name, "data");
    EXPECT_EQ(p.memory[0].bytesRead, 20 + 6);
    EXPECT_EQ(p.memory[0].bytesWritten, 20);
    EXPECT_EQ(p.linesWritten, 2) << "data and stack";
    const Latencies latencies{{{"string", 3}, {"integer", 1}, {"load", 4}}};
    EXPECT_LE(longestChain(call, p, latencies).instructions, p.instructions) << "no iteration is a link";
}

TEST(Explain, KindsByName) {
    const struct {
        const char* name;
        Group group;
        Precision precision;
        int operations;
    } rows[] = {{"addsubpd", Group::floatAdd, Precision::full, 1},
                {"fnmadd231ss", Group::multiplyAdd, Precision::single, 2},
                {"sqrtsd", Group::floatDivide, Precision::full, 1},
                {"maxps", Group::floatAdd, Precision::single, 0},
                {"andnps", Group::logic, Precision::single, 0},
                {"cvtps2dq", Group::convert, Precision::none, 0},
                {"pmovsxwd", Group::convert, Precision::none, 0},
                {"pmovmskb", Group::shuffle, Precision::none, 0},
                {"pmaddwd", Group::vectorMultiply, Precision::none, 0},
                {"packssdw", Group::shuffle, Precision::none, 0},
                {"psubsw", Group::vectorInteger, Precision::none, 0},
                {"movapd", Group::move, Precision::full, 0},
                {"movhlps", Group::shuffle, Precision::single, 0},
                {"mulph", Group::floatMultiply, Precision::half, 1},
                {"pternlogd", Group::logic, Precision::none, 0}};
    for (const auto& row : rows) {
        const NamedKind kind = vectorKind(row.name);
        EXPECT_EQ(kind.group, row.group) << row.name;
        EXPECT_EQ(kind.precision, row.precision) << row.name;
        EXPECT_EQ(kind.operations, row.operations) << row.name;
    }
    EXPECT_EQ(x87Kind("fsqrt").operations, 1);
}

TEST(Explain, FilesThatAreNone) {
    for (const char* text :
         {"hello\n", "function f\nsteps 3\n", "function f\nregisters rsp rip\ndata 12\nshort"}) {
        std::istringstream input(text);
        EXPECT_THROW(readSteps(input, "file"), ExplainError) << text;
    }
}

} // namespace
