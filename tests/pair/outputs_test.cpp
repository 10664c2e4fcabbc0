// What both sides computed: by type, by the rules, and named.
#include "examination.h"
#include "outputs.h"

#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

namespace {

using testing::HasSubstr;

/** A block that owns its bytes. */
struct OwnedBlock {
    std::string what;
    std::vector<char> bytes;
};

template <class Value>
OwnedBlock blockOf(const char* what, const std::vector<Value>& values) {
    OwnedBlock block{what, std::vector<char>(values.size() * sizeof(Value))};
    std::memcpy(block.bytes.data(), values.data(), block.bytes.size());
    return block;
}

constexpr OutputRules usual;
constexpr OutputRules bitEqual{std::nullopt};

/** The comparison of one call with one block a side. */
OutputComparison compareBlocks(const OwnedBlock& before, const OwnedBlock& after, const OutputRules& rules,
                               const AddressRanges& memory = {}) {
    Combination first, second;
    first.status = second.status = 0;
    first.blocks.push_back({1, before.what, before.bytes});
    second.blocks.push_back({1, after.what, after.bytes});
    return compareOutputs({{&first, &second}}, rules, memory, memory);
}

TEST(PairOutputs, FloatsAreRightByTheirNoise) {
    std::vector<float> values(1000, 1.0F);
    const OwnedBlock before = blockOf("Vector 32f len=1000", values);
    values[7] = std::nextafter(1.0F, 2.0F);
    const OutputComparison ulp = compareBlocks(before, blockOf("Vector 32f len=1000", values), usual);
    EXPECT_TRUE(ulp.right);
    EXPECT_FALSE(ulp.equal);
    EXPECT_EQ(ulp.ulps, 1);
    // 1000 ones against one error of 2 to the -23.
    EXPECT_NEAR(ulp.decibels, 10 * std::log10(1000.0) + 20 * 23 * std::log10(2.0), 1e-6);
    EXPECT_FALSE(compareBlocks(before, blockOf("Vector 32f len=1000", values), bitEqual).right);

    values[7] = -1.0F;
    const OutputComparison sign = compareBlocks(before, blockOf("Vector 32f len=1000", values), usual);
    EXPECT_FALSE(sign.right);
    EXPECT_THAT(sign.difference, HasSubstr("block 0 (Vector 32f len=1000) index 7: 1 and -1"));
    EXPECT_EQ(sign.ulps, 2.0 * 0x3F800000); // through 0
}

TEST(PairOutputs, WhatIsNoNumberOnOneSideIsWrong) {
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const float infinity = std::numeric_limits<float>::infinity();
    const auto right = [](float a, float b) {
        return compareBlocks(blockOf<float>("Vector 32f len=2", {1e30F, a}),
                             blockOf<float>("Vector 32f len=2", {1e30F, b}), usual)
            .right;
    };
    EXPECT_FALSE(right(nan, 1));
    EXPECT_FALSE(right(1, infinity));
    EXPECT_FALSE(right(infinity, -infinity));
    EXPECT_TRUE(right(nan, -nan));
    EXPECT_TRUE(right(0.0F, -0.0F));
}

TEST(PairOutputs, IntegersHaveToBeEqual) {
    const OwnedBlock before = blockOf<std::int16_t>("Vector 16sc len=2", {100, -7, 3, 4});
    const OutputComparison result =
        compareBlocks(before, blockOf<std::int16_t>("Vector 16sc len=2", {100, -7, 3, 5}), usual);
    EXPECT_FALSE(result.right);
    EXPECT_THAT(result.difference, HasSubstr("index 3: 4 and 5"));
    EXPECT_TRUE(compareBlocks(before, before, bitEqual).equal);
}

TEST(PairOutputs, AddressesInBytesAreNoDifference) {
    const AddressRanges memory{{0x1000, 0x2000}};
    const OwnedBlock before = blockOf<std::uint64_t>("", {5, 0x1010});
    EXPECT_TRUE(compareBlocks(before, blockOf<std::uint64_t>("", {5, 0x1ff0}), usual, memory).equal);
    EXPECT_FALSE(compareBlocks(before, blockOf<std::uint64_t>("", {5, 0x2000}), usual, memory).right);
    EXPECT_FALSE(compareBlocks(before, blockOf<std::uint64_t>("", {6, 0x1010}), usual, memory).right);
    const OwnedBlock typed = blockOf<std::uint64_t>("Vector 64u len=2", {5, 0x1010});
    EXPECT_FALSE(
        compareBlocks(typed, blockOf<std::uint64_t>("Vector 64u len=2", {5, 0x1ff0}), usual, memory).right);
}

TEST(PairOutputs, TellWhatElseDiffers) {
    Combination before, after;
    before.status = after.status = 0;
    const PairRow row{{&before, &after}};
    const auto difference = [&] { return compareOutputs(row, usual, {}, {}); };
    EXPECT_TRUE(difference().equal);
    after.status = -5;
    EXPECT_EQ(difference().difference, "status 0 and status -5");
    after.status.reset();
    EXPECT_EQ(difference().difference, "status 0 and no return");
    after.status = 0;
    const OwnedBlock block = blockOf<int>("Vector 32s len=1", {1});
    after.blocks.push_back({1, block.what, block.bytes});
    EXPECT_EQ(difference().difference, "0 and 1 blocks of data");
    after.blocks.clear();
    after.digest = 1;
    EXPECT_TRUE(difference().dataDiffer);
    EXPECT_FALSE(difference().right);
    EXPECT_EQ(difference().difference, "the data before the call differ");
    const OwnedBlock one = blockOf<int>("Vector 32s len=2", {1, 2}), other = blockOf<int>("", {1, 3});
    before.blocks.push_back({1, one.what, one.bytes});
    after.blocks.push_back({1, one.what, other.bytes});
    EXPECT_EQ(difference().difference,
              "the data before the call differ; after it block 0 (Vector 32s len=2) index 1: 2 and 3");
}

// ---- The log ----

std::string entry(bxTurnsForm::Kind kind, bxTurnsForm::Place place, const std::string& content) {
    const bxTurnsForm::Entry head{kind, place, static_cast<std::uint32_t>(content.size())};
    return std::string(reinterpret_cast<const char*>(&head), sizeof head) + content;
}

template <class Value>
std::string bytesOf(Value value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

TEST(PairLog, IsReadAsFarAsItGoes) {
    using namespace std::string_literals;
    const std::string log =
        entry(bxTurnsForm::combinationBegins, {3, 4}, "zorsA\0Len=1\0"s + bytesOf<std::uint64_t>(77)) +
        entry(bxTurnsForm::called, {3, 4}, bytesOf<std::int32_t>(2)) +
        entry(bxTurnsForm::block, {3, 4}, "Vector 8u len=2\0ab"s) +
        entry(bxTurnsForm::called, {3, 4}, bytesOf<std::int32_t>(9)) +
        entry(bxTurnsForm::block, {3, 4}, "\0abc"s) +
        entry(bxTurnsForm::cost, {3, 4}, bytesOf<double>(12.5)) +
        entry(bxTurnsForm::mappings, {3, 4}, "1000-2000 rw-p\n400000-500000 r-xp x\n") +
        entry(bxTurnsForm::runEnded, {3, 4}, "");
    Examination all;
    EXPECT_TRUE(readLog(log, all));
    ASSERT_EQ(all.combinations.size(), 1U);
    const Combination& c = all.combinations[0];
    EXPECT_EQ(c.function, "zorsA");
    EXPECT_EQ(c.parameters, "Len=1");
    EXPECT_EQ(c.digest, 77U);
    EXPECT_EQ(c.status, 2);
    EXPECT_EQ(c.clocks, 12.5);
    ASSERT_EQ(c.blocks.size(), 2U);
    EXPECT_EQ(c.blocks[0].what, "Vector 8u len=2");
    EXPECT_EQ(std::string(c.blocks[0].bytes.begin(), c.blocks[0].bytes.end()), "ab");
    EXPECT_EQ(c.blocks[1].call, 2);
    EXPECT_EQ(all.memory, (AddressRanges{{0x1000, 0x2000}, {0x400000, 0x500000}}));

    // Cut off anywhere, it is incomplete, and what stands before holds.
    for (std::size_t size = 0; size + sizeof(bxTurnsForm::Entry) <= log.size(); ++size) {
        Examination some;
        EXPECT_FALSE(readLog({log.data(), size}, some)) << size;
        EXPECT_LE(some.combinations.size(), 1U);
    }
}

// ---- Rows ----

Examination sideWith(const std::vector<std::string>& functions) {
    Examination side;
    for (const std::string& function : functions) {
        Combination c;
        c.place = {static_cast<int>(side.combinations.size()), 0};
        c.function = function;
        side.combinations.push_back(c);
    }
    return side;
}

TEST(PairRowsOf, KeepTheSidesInStep) {
    const Examination before = sideWith({"a", "b", "c", "c", "d", "e", "x"});
    const Examination after = sideWith({"y", "a", "c", "d", "b", "c", "e"});
    const PairRows rows = matchRows(before, after);
    std::string both;
    for (const PairRow& row : rows.both) {
        both += row.before().function;
        EXPECT_EQ(row.before().function, row.after().function);
    }
    EXPECT_EQ(both, "acde"); // "abce" is as long
    EXPECT_EQ(rows.crossed.size(), 2U);
    ASSERT_EQ(rows.only[0].size(), 1U);
    EXPECT_EQ(rows.only[0][0]->function, "x");
    ASSERT_EQ(rows.only[1].size(), 1U);
    EXPECT_EQ(rows.only[1][0]->function, "y");
}

} // namespace
