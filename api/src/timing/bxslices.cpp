#include "timing/bxslices.h"

#include <algorithm>
#include <cmath>

namespace {

double reference(const bxSlice& slice) {
    return (slice.referenceBefore + slice.referenceAfter) / 2;
}

/** False if the counter stood still or was set back. */
bool counted(const bxSlice& slice) {
    return reference(slice) > 0;
}

bool disturbed(const bxSlice& slice) {
    return bxSliceSeries::moved(slice) || slice.disagreement > bxSliceSeries::mostDisagreement ||
           slice.away > bxSliceSeries::mostAway;
}

double loss(double throughput, const bxAloneCore& core) {
    const double lost = core.throughput > 0 ? 1 - throughput / core.throughput : 0;
    return lost > core.mostLoss ? lost : 0;
}

/** What counts of some slices. */
struct Values {
    std::vector<double> clocks, rates, throughputs, away;

    int size() const { return static_cast<int>(clocks.size()); }
    void add(const bxSlice& slice) {
        clocks.push_back(slice.perCall * (1 - slice.away) / reference(slice));
        rates.push_back(1 / reference(slice));
        throughputs.push_back(slice.throughput);
        away.push_back(slice.away);
    }
};

/** Slices by what happened in them; those in which the counter failed are in none. */
struct Sorted {
    Values alone, shared, dropped;

    Sorted(const std::vector<bxSlice>& slices, const bxAloneCore& core) {
        for (const bxSlice& slice : slices)
            if (counted(slice))
                (disturbed(slice) ? dropped : loss(slice.throughput, core) > 0 ? shared : alone).add(slice);
    }
    /** What others took of the slices that are not the core's own: of its work, or of the time. */
    double lost(const bxAloneCore& core) const {
        if (shared.size() > 0)
            return loss(bxMedian(shared.throughputs), core);
        const double away = bxMedian(dropped.away);
        return away > bxSliceSeries::mostAway ? away : 0;
    }
    /** The best of the three. */
    const Values& values() const { return alone.size() > 0 ? alone : shared.size() > 0 ? shared : dropped; }
};

} // namespace

bool bxSliceSeries::moved(const bxSlice& slice) {
    return std::abs(slice.referenceAfter - slice.referenceBefore) > mostMovement * reference(slice);
}

double bxDisagreement(double once, double twice, int n, double least) {
    const double length = std::max(least, n * std::abs(2 * twice - once));
    return (twice > once ? 2 : 1) * n * std::abs(twice - once) / length;
}

void bxOwnCore::saw(const bxSlice& slice) {
    if (!counted(slice) || disturbed(slice))
        return;
    const double now = slice.throughput;
    m_throughput = std::max(m_throughput, std::min(m_last, now));
    learnNoise(now);
    learnSteady(now);
    m_last = now;
}

void bxOwnCore::learnNoise(double now) {
    if (m_last > 0)
        m_steps.push_back(std::abs(now - m_last) / m_last);
    if (m_steps.size() < stretch)
        return;
    // A quarter of the differences of two normal variates is below 0.451 standard deviations of one.
    const auto quarter = m_steps.begin() + stretch / 4;
    std::nth_element(m_steps.begin(), quarter, m_steps.end());
    m_noise = std::min(m_noise, *quarter / 0.451);
    m_steps.clear();
}

void bxOwnCore::learnSteady(double now) {
    m_sum += now;
    if (++m_inBlock < blockSize)
        return;
    const double mean = m_sum / blockSize;
    m_sum = 0;
    m_inBlock = 0;
    m_low = std::min(m_low, mean);
    m_high = std::max(m_high, mean);
    if (m_blocks == 0 || m_high - m_low > samenessByNoise * m_noise / std::sqrt(blockSize) * m_high) {
        m_low = m_high = mean;
        m_blocks = 0;
    }
    if (++m_blocks >= steadyBlocks)
        m_throughput = m_high;
}

bxAloneCore bxOwnCore::alone() const {
    return {m_throughput, std::clamp(lossByNoise * m_noise, leastLoss, largestLoss)};
}

bool bxSliceSeries::endsShared(const bxAloneCore& core) const {
    return !m_slices.empty() &&
           (loss(m_slices.back().throughput, core) > 0 || m_slices.back().away > mostAway);
}

bool bxSliceSeries::allDisturbed() const {
    return std::all_of(m_slices.begin(), m_slices.end(),
                       [](const bxSlice& slice) { return !counted(slice) || disturbed(slice); });
}

bxPreciseFigure bxSliceSeries::figure(double accuracy, const bxAloneCore& core) const {
    const Sorted sorted(m_slices, core);
    const Values& values = sorted.values();
    bxPreciseFigure figure;
    figure.slices = &values == &sorted.dropped ? 0 : values.size();
    figure.dropped = count() - figure.slices;
    if (values.size() == 0)
        return figure;
    figure.clocks = figure.low = figure.high = bxMedian(values.clocks);
    figure.coreClocksPerTick = bxMedian(values.rates);
    figure.throughput = bxMedian(values.throughputs);
    figure.known = sorted.alone.size() >= fewestForInterval;
    if (!figure.known) {
        figure.lost = sorted.lost(core);
        return figure;
    }
    const double time = bxCorrelationTime(bxNeighbourCorrelation(values.clocks), values.size());
    const bxInterval interval = bxMedianInterval(values.clocks, confidence);
    const double wider = bxWidening(time, values.size());
    figure.low -= wider * (figure.clocks - interval.low);
    figure.high += wider * (interval.high - figure.clocks);
    figure.settled = values.size() >= settledAt * time;
    figure.reached = figure.accuracy() <= accuracy;
    return figure;
}
