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
    return std::abs(slice.referenceAfter - slice.referenceBefore) >
               bxSliceSeries::mostMovement * reference(slice) ||
           slice.disagreement > bxSliceSeries::mostDisagreement;
}

double loss(double throughput, double full) {
    const double lost = full > 0 ? 1 - throughput / full : 0;
    return lost > bxSliceSeries::mostLoss ? lost : 0;
}

/** What counts of some slices. */
struct Values {
    std::vector<double> clocks, rates, throughputs;

    int size() const { return static_cast<int>(clocks.size()); }
    void add(const bxSlice& slice) {
        clocks.push_back(slice.perCall / reference(slice));
        rates.push_back(1 / reference(slice));
        throughputs.push_back(slice.throughput);
    }
};

/** Slices by what happened in them; those in which the counter failed are in none. */
struct Sorted {
    Values alone, shared, dropped;

    Sorted(const std::vector<bxSlice>& slices, double full) {
        for (const bxSlice& slice : slices)
            if (counted(slice))
                (disturbed(slice) ? dropped : loss(slice.throughput, full) > 0 ? shared : alone).add(slice);
    }
    /** The best of the three. */
    const Values& values() const { return alone.size() > 0 ? alone : shared.size() > 0 ? shared : dropped; }
};

} // namespace

double bxDisagreement(double once, double twice, int n, double least) {
    const double length = std::max(least, n * std::abs(2 * twice - once));
    return (twice > once ? 2 : 1) * n * std::abs(twice - once) / length;
}

void bxOwnCore::saw(const bxSlice& slice) {
    if (!counted(slice) || disturbed(slice))
        return;
    const double now = slice.throughput;
    m_throughput = std::max(m_throughput, std::min(m_last, now));
    m_last = now;
    m_low = std::min(m_low, now);
    m_high = std::max(m_high, now);
    if (m_same == 0 || m_high - m_low > sameness * m_high) {
        m_low = m_high = now;
        m_same = 0;
    }
    if (++m_same >= steady)
        m_throughput = m_low;
}

bool bxSliceSeries::endsShared(double full) const {
    return !m_slices.empty() && loss(m_slices.back().throughput, full) > 0;
}

bxPreciseFigure bxSliceSeries::figure(double accuracy, double full) const {
    const Sorted sorted(m_slices, full);
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
        figure.lost = loss(bxMedian(sorted.shared.throughputs), sorted.shared.size() > 0 ? full : 0);
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
