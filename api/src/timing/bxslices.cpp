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
    Values alone, usable, dropped; ///< usable: alone or shared

    Sorted(const std::vector<bxSlice>& slices, double full) {
        for (const bxSlice& slice : slices) {
            if (!counted(slice))
                continue;
            if (disturbed(slice)) {
                dropped.add(slice);
                continue;
            }
            usable.add(slice);
            if (loss(slice.throughput, full) == 0)
                alone.add(slice);
        }
    }
};

} // namespace

void bxOwnCore::saw(const bxSlice& slice) {
    if (!counted(slice) || disturbed(slice))
        return;
    m_throughput = std::max(m_throughput, std::min(m_last, slice.throughput));
    m_last = slice.throughput;
}

bool bxSliceSeries::mayEnd(double full) const {
    return count() >= 4 * fewest || Sorted(m_slices, full).alone.size() >= fewest;
}

bool bxSliceSeries::endsShared(double full) const {
    return !m_slices.empty() && loss(m_slices.back().throughput, full) > 0;
}

bxPreciseFigure bxSliceSeries::figure(double accuracy, double full) const {
    const Sorted sorted(m_slices, full);
    const bool alone = sorted.alone.size() >= fewest;
    const Values& kept = alone ? sorted.alone : sorted.usable;
    const Values& values = kept.size() > 0 ? kept : sorted.dropped;
    bxPreciseFigure figure;
    figure.slices = kept.size();
    figure.dropped = count() - kept.size();
    if (values.size() == 0)
        return figure;
    std::vector<double> judged = kept.clocks;
    if (kept.size() < fewest)
        judged.insert(judged.end(), sorted.dropped.clocks.begin(), sorted.dropped.clocks.end());
    if (judged.size() >= std::size_t{fewest} * batch)
        judged = bxBatchMedians(judged, batch);
    const bxInterval interval = bxMedianInterval(judged, confidence);
    figure.clocks = bxMedian(values.clocks);
    figure.low = std::min(interval.low, figure.clocks);
    figure.high = std::max(interval.high, figure.clocks);
    figure.coreClocksPerTick = bxMedian(values.rates);
    figure.throughput = bxMedian(values.throughputs);
    figure.lost = loss(figure.throughput, full);
    figure.reached = alone && interval.halfWidth() <= accuracy * figure.clocks;
    return figure;
}
