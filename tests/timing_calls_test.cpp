#include "data/bxalloc.h"
#include "system/bxcacheflush.h"
#include "timing/bxcoldcall.h"
#include "timing/bxsinglecalls.h"
#include "timingsupport.h"

#include <array>
#include <cmath>
#include <numeric>
#include <random>

using testing::HasSubstr;

namespace {

std::vector<bxTimedCall> callsOf(const std::vector<double>& clocks) {
    std::vector<bxTimedCall> calls;
    for (const double c : clocks)
        calls.push_back({c, false});
    return calls;
}

TEST(CallSpread, QuantilesAreTheLeastThatSoManyDoNotExceed) {
    std::vector<double> clocks(1000);
    std::iota(clocks.rbegin(), clocks.rend(), 1);
    const bxCallSpread spread = bxSpreadOfCalls(callsOf(clocks), {});
    EXPECT_EQ(spread.least, 1);
    EXPECT_EQ(spread.median, 500);
    EXPECT_EQ(spread.percent99, 990);
    EXPECT_EQ(spread.permille999, 999);
    EXPECT_EQ(spread.most, 1000);
    EXPECT_EQ(std::accumulate(spread.histogram.begin(), spread.histogram.end(), 0), 1000);
    EXPECT_EQ(spread.histogram[0], 1) << "a 16th of the way to 1000 is 1.54";
    EXPECT_EQ(spread.histogram[15], 1000 - 649) << "and the last one from 649.4 on";

    EXPECT_EQ(bxSpreadOfCalls(callsOf({7}), {}).permille999, 7);
    EXPECT_STREQ(bxSpreadOfCalls({}, {1}).text().c_str(), "");
    EXPECT_STREQ(bxSpreadOfCalls(callsOf({50, 50, 800}), {}).text().c_str(),
                 "calls=3 least=50.0 median=50.0 99%=800 99.9%=800 most=800 interrupted=0 "
                 "hist=2.0.0.0.0.0.0.0.0.0.0.0.0.0.0.1");
}

TEST(CallSpread, InterruptedCallsStandApart) {
    std::vector<bxTimedCall> calls = callsOf(std::vector<double>(1000, 100));
    calls[3] = {90'000, true};
    calls[4].clocks = 5000; // like one that the idle loop met
    calls[5].clocks = 1000; // like none
    bxCallSpread spread = bxSpreadOfCalls(calls, {6000});
    EXPECT_EQ(spread.interrupted, 2);
    EXPECT_EQ(spread.longestInterrupted, 90'000);
    EXPECT_EQ(spread.most, 1000);
    spread.scale(1.5);
    EXPECT_THAT(spread.text().c_str(), HasSubstr(" most=1500 interrupted=2 upto=135000 hist="));
    EXPECT_EQ(bxSpreadOfCalls(calls, {60'000, 1'000'000}).interrupted, 1) << "of other lengths";

    for (std::size_t i = 0; i < 500; ++i)
        calls[i].interrupted = true;
    spread = bxSpreadOfCalls(calls, {});
    EXPECT_EQ(spread.most, 90'000) << "of what is the rule, nothing is left out";
    EXPECT_THAT(spread.text().c_str(), HasSubstr(" interrupted=500 kept upto=90000 "));
}

TEST(CallSpread, TheKernelsSwitchesStruckTheLongestCalls) {
    std::vector<bxTimedCall> calls = callsOf(std::vector<double>(50, 100));
    calls[7].clocks = 80'000;
    calls[9].clocks = 70'000;
    calls[11] = {3000, true};
    const auto marked = [&](long switches) {
        std::vector<bxTimedCall> some = calls;
        bxMarkSwitchedCalls(some.begin(), some.end(), switches);
        return std::count_if(some.begin(), some.end(), [](const auto& call) { return call.interrupted; });
    };
    EXPECT_EQ(marked(0), 1);
    EXPECT_EQ(marked(1), 1) << "that one was known";
    EXPECT_EQ(marked(2), 2);
    EXPECT_EQ(marked(9), 3) << "the others struck between the calls";
}

// ---- Functions whose distribution is known ----

int s_turn;

void add(int clocks) {
    unsigned sum = 0;
    for (int i = 0; i < clocks; i += 10)
        asm volatile(".rept 10\n\tadd %0, %0\n\t.endr" : "+r"(sum) : : "cc");
}

int everyHundredthTakesTenTimes() {
    add(++s_turn % 100 == 0 ? 20'000 : 2000);
    return 0;
}

int growsWithItsTurn() {
    add(200 * (++s_turn % 100 + 1));
    return 0;
}

int startsAnew() {
    s_turn = 0;
    return 0;
}

/** Whether it holds in one of some tries: company on the core spoils some of them. */
template <class Try>
bool holdsOnce(Try attempt) {
    for (int i = 0; i < 5; ++i) {
        s_turn = 0;
        if (attempt())
            return true;
    }
    return false;
}

bool near(double value, double expected, double tolerance) {
    return std::abs(value - expected) <= tolerance;
}

TEST_F(Engine, SingleCallsShowTheirDistribution) {
    int status = -1;
    bxCallSpread spread;
    EXPECT_TRUE(holdsOnce([&] {
        spread = bxTimeSingleCalls({everyHundredthTakesTenTimes}, 10'000, 0, status);
        // A call in a hundred is in the last bins, the others are in the first.
        const auto slow = std::accumulate(spread.histogram.begin() + 8, spread.histogram.end(), 0);
        return near(spread.least / spread.median, 1, 0.3) &&
               near(spread.permille999 / spread.median, 10, 2) && spread.most > 8 * spread.median &&
               (!spread.apart || near(slow, 100, 60));
    })) << spread.text().c_str();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(spread.calls, 10'000);

    EXPECT_TRUE(holdsOnce([&] {
        spread = bxTimeSingleCalls({growsWithItsTurn}, 10'000, 0, status);
        return near(spread.percent99 / spread.median, 1.98, 0.3) &&
               near(spread.least / spread.median, 0.02, 0.02);
    })) << spread.text().c_str();
    EXPECT_TRUE(holdsOnce([&] {
        spread = bxTimeSingleCalls({growsWithItsTurn, startsAnew}, 1000, 0, status);
        return near(spread.percent99 / spread.median, 1, 0.5);
    })) << "prepared before each, it never grows: "
        << spread.text().c_str();
}

TEST_F(Engine, WhatDoesNothingCostsNextToNothingInASingleCall) {
    int status = -1;
    const bxCallSpread spread = bxTimeSingleCalls({[] { return 0; }}, 1000, 0, status);
    EXPECT_LT(spread.median, 30) << "the reads of the counter are taken off";
}

struct CountsResets : bxObject {
    int resets = 0;
    bool setReservedCopy() override { return ++resets, true; }
};

TEST_F(Engine, SingleCallsHaveTheirDataRestoredAndEndAtAFailure) {
    CountsResets owner;
    void* const block = bxMalloc(16, 0, 0, &owner);
    s_statuses = {0, 0, 3, 0};
    s_calls = s_inits = 0;
    int status = 0;
    EXPECT_EQ(bxTimeSingleCalls({call, init, true}, 20, 0, status).calls, 20);
    EXPECT_EQ(status, 3);
    EXPECT_EQ(s_calls, 21); // the first one untimed
    EXPECT_EQ(s_inits, 21);
    EXPECT_EQ(owner.resets, 21);
    bxFree(block);
    s_statuses = {0, 0, -4};
    s_calls = 0;
    EXPECT_STREQ(bxTimeSingleCalls({call}, 20, 0, status).text().c_str(), "calls=?status");
    EXPECT_EQ(status, -4);
    EXPECT_EQ(s_calls, 3);
    s_calls = 0;
    EXPECT_STREQ(bxTimeColdCalls({call}, 0, status).text().c_str(), "first=?status");
    EXPECT_EQ(s_calls, 3);
}

#ifndef BENCHEX_EMULATED // which has no caches to be emptied

/** A walk over lines of the cache in an order that nothing can foresee. */
struct Line {
    Line* next;
    std::array<char, 64 - sizeof(Line*)> rest;
};
std::vector<Line> s_lines(8192);
int s_walked;

int walk() {
    const Line* line = s_lines.data();
    for (int i = 0; i < s_walked; ++i)
        line = line->next;
    return line == nullptr;
}

TEST_F(Engine, AFirstCallFindsNothingInTheCaches) {
    std::vector<std::size_t> order(s_lines.size());
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin() + 1, order.end(), std::mt19937(1)); // NOLINT: the same in every run
    for (std::size_t i = 0; i < order.size(); ++i)
        s_lines[order[i]].next = &s_lines[order[(i + 1) % order.size()]];
    int status = 0;
    const auto first = [&](int lines) {
        s_walked = lines;
        return bxTimeColdCalls({walk}, 0, status).clocks;
    };
    s_walked = 256; // 16 KB: in the first cache when warm
    const double warm = bxTimeSingleCalls({walk}, 200, 0, status).median;
    const double cold = first(256);
    if (!bxCacheFlush().possible())
        GTEST_SKIP() << "the processor cannot empty its caches";
    EXPECT_GT(cold, 8 * warm);
    EXPECT_NEAR(first(2048) / cold, 8, 3) << "it grows with the data";
    EXPECT_GT(bxCacheFlush().size(), s_lines.size() * sizeof(Line));
}

#endif

} // namespace
