#include "timing/bxprecise.h"

#include "system/bxclock.h"

#include <algorithm>
#include <cmath>

void bxSliceSeries::add(const bxSlice& slice) {
    ++m_count;
    const double reference = (slice.referenceBefore + slice.referenceAfter) / 2;
    if (!(reference > 0))
        return; // the counter stood still or was set back
    const bool disturbed =
        std::abs(slice.referenceAfter - slice.referenceBefore) > mostMovement * reference ||
        slice.disagreement > mostDisagreement;
    (disturbed ? m_droppedClocks : m_clocks).push_back(slice.perCall / reference);
    (disturbed ? m_droppedRates : m_rates).push_back(1 / reference);
}

bxPreciseFigure bxSliceSeries::figure(double accuracy) const {
    const bool some = !m_clocks.empty();
    const std::vector<double>& values = some ? m_clocks : m_droppedClocks;
    bxPreciseFigure figure;
    if (values.empty())
        return figure;
    figure.slices = static_cast<int>(m_clocks.size());
    std::vector<double> judged = m_clocks;
    if (figure.slices < fewest)
        judged.insert(judged.end(), m_droppedClocks.begin(), m_droppedClocks.end());
    if (judged.size() >= std::size_t{fewest} * batch)
        judged = bxBatchMedians(judged, batch);
    const bxInterval interval = bxMedianInterval(judged, confidence);
    figure.clocks = bxMedian(values);
    figure.low = std::min(interval.low, figure.clocks);
    figure.high = std::max(interval.high, figure.clocks);
    figure.coreClocksPerTick = bxMedian(some ? m_rates : m_droppedRates);
    figure.dropped = m_count - figure.slices;
    figure.reached = figure.slices >= fewest && interval.halfWidth() <= accuracy * figure.clocks;
    return figure;
}

namespace {

/** The additions of `blocks` blocks. */
inline void addInChain(int blocks) {
    unsigned sum = 0;
    const unsigned one = 1;
    // A register is added, not a constant: processors exist that fold additions of constants.
    asm volatile("1:\n\t.rept 64\n\tadd %2, %0\n\t.endr\n\tsub $1, %1\n\tjnz 1b"
                 : "+r"(sum), "+r"(blocks)
                 : "r"(one)
                 : "cc");
}

} // namespace

long long bxReferenceTicks(int blocks) {
    // Whatever ran before: both chains of a difference start in the same state. Without it the shorter one,
    // that comes first, was 0.04 % of the difference too long.
    constexpr int untimed = 16;
    addInChain(untimed);
    const unsigned long long first = zor_get_cpu_counter();
    addInChain(blocks);
    const unsigned long long last = zor_get_cpu_counter();
    return static_cast<long long>(last - first) * bxCpuTicker::getClockFactor();
}
