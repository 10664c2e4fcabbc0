#include "timing/bxcallspread.h"

#include "output/bxtable.h"
#include "timing/bxstatistics.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace {

/** Of calls in rising order: the least that so many of a thousand do not exceed. */
double quantile(const std::vector<bxTimedCall>& calls, long long permille) {
    const auto count = static_cast<long long>(calls.size());
    const long long rank = (count * permille + 999) / 1000;
    return calls[static_cast<std::size_t>(std::max(rank, 1LL) - 1)].clocks;
}

double medianOf(std::vector<bxTimedCall>::iterator begin, std::vector<bxTimedCall>::iterator end) {
    std::vector<double> clocks;
    for (auto call = begin; call != end; ++call)
        clocks.push_back(call->clocks);
    return bxMedian(std::move(clocks));
}

/** \param calls  in rising order */
void markByIdleLoop(std::vector<bxTimedCall>& calls, std::vector<double>& idle) {
    std::sort(idle.rbegin(), idle.rend());
    const double median = medianOf(calls.begin(), calls.end());
    auto next = idle.begin();
    for (auto call = calls.rbegin(); call != calls.rend() && next != idle.end(); ++call) {
        const double excess = call->clocks - median;
        while (next != idle.end() && *next > 2 * excess)
            ++next;
        if (call->interrupted || next == idle.end() || *next < excess / 2)
            continue;
        call->interrupted = true;
        ++next;
    }
}

void fillHistogram(bxCallSpread& spread, const std::vector<bxTimedCall>& calls) {
    const double from = std::max(spread.least, 1.0);
    const double whole = std::log(std::max(spread.most, from) / from);
    for (const bxTimedCall& call : calls) {
        const double part = whole > 0 ? std::log(std::max(call.clocks, from) / from) / whole : 0;
        const auto bin = static_cast<std::size_t>(part * bxCallSpread::bins);
        ++spread.histogram[std::min(bin, spread.histogram.size() - 1)];
    }
}

bxString clocksText(double clocks) {
    char text[64];
    std::snprintf(text, sizeof text, clocks < 100 ? "%.1f" : "%.0f", clocks);
    return text;
}

} // namespace

bxCallSpread bxSpreadOfCalls(std::vector<bxTimedCall> calls, std::vector<double> idle) {
    bxCallSpread spread;
    spread.calls = static_cast<int>(calls.size());
    if (calls.empty())
        return spread;
    std::sort(calls.begin(), calls.end(),
              [](const bxTimedCall& a, const bxTimedCall& b) { return a.clocks < b.clocks; });
    markByIdleLoop(calls, idle);
    for (const bxTimedCall& call : calls)
        if (call.interrupted) {
            ++spread.interrupted;
            spread.longestInterrupted = call.clocks;
        }
    spread.apart = 2 * spread.interrupted < spread.calls;
    if (spread.apart)
        std::erase_if(calls, [](const bxTimedCall& call) { return call.interrupted; });
    spread.least = calls.front().clocks;
    spread.median = quantile(calls, 500);
    spread.percent99 = quantile(calls, 990);
    spread.permille999 = quantile(calls, 999);
    spread.most = calls.back().clocks;
    fillHistogram(spread, calls);
    return spread;
}

void bxMarkSwitchedCalls(std::vector<bxTimedCall>::iterator begin, std::vector<bxTimedCall>::iterator end,
                         long switches) {
    constexpr double shortest = 2000; // clocks: another process ran
    switches -=
        static_cast<long>(std::count_if(begin, end, [](const auto& call) { return call.interrupted; }));
    if (switches <= 0)
        return;
    const double usual = medianOf(begin, end);
    for (; switches > 0; --switches) {
        auto longest = end;
        for (auto call = begin; call != end; ++call)
            if (!call->interrupted && (longest == end || call->clocks > longest->clocks))
                longest = call;
        if (longest == end || longest->clocks < usual + shortest)
            return; // between the calls
        longest->interrupted = true;
    }
}

void bxCallSpread::scale(double factor) {
    for (double* clocks : {&least, &median, &percent99, &permille999, &most, &longestInterrupted})
        *clocks *= factor;
}

bxString bxCallSpread::text() const {
    if (!problem.empty())
        return bxString() << bxTable::singleCalls << "?" << problem;
    if (calls == 0)
        return {};
    bxString text;
    text << bxTable::singleCalls << calls << " " << bxTable::leastCall << clocksText(least) << " "
         << bxTable::medianCall << clocksText(median) << " " << bxTable::percent99 << clocksText(percent99)
         << " " << bxTable::permille999 << clocksText(permille999) << " " << bxTable::mostCall
         << clocksText(most) << " " << bxTable::interruptedCalls << interrupted;
    if (!apart)
        text << " " << bxTable::interruptedKept;
    if (interrupted > 0)
        text << " " << bxTable::longestInterrupted << clocksText(longestInterrupted);
    text << " " << bxTable::histogram;
    for (std::size_t i = 0; i < histogram.size(); ++i)
        text << (i == 0 ? "" : ".") << histogram[i];
    return text;
}
