#include "timing/bxprecise.h"

#include "system/bxclock.h"

#include <cmath>

void bxSliceSeries::add(const bxSlice& slice) {
    ++m_count;
    const double reference = (slice.referenceBefore + slice.referenceAfter) / 2;
    if (!(reference > 0))
        return; // the counter stood still or was set back
    const bool moved = std::abs(slice.referenceAfter - slice.referenceBefore) > mostMovement * reference;
    (moved ? m_droppedClocks : m_clocks).push_back(slice.perCall / reference);
    (moved ? m_droppedRates : m_rates).push_back(1 / reference);
}

bxPreciseFigure bxSliceSeries::figure(double accuracy) const {
    const bool some = !m_clocks.empty();
    const std::vector<double>& values = some ? m_clocks : m_droppedClocks;
    bxPreciseFigure figure;
    if (values.empty())
        return figure;
    const bxInterval interval = bxMedianInterval(values, confidence);
    figure.clocks = bxMedian(values);
    figure.low = interval.low;
    figure.high = interval.high;
    figure.coreClocksPerTick = bxMedian(some ? m_rates : m_droppedRates);
    figure.slices = static_cast<int>(m_clocks.size());
    figure.dropped = m_count - figure.slices;
    figure.reached = figure.slices >= fewest && interval.halfWidth() <= accuracy * figure.clocks;
    return figure;
}

long long bxReferenceTicks(int blocks) {
    unsigned sum = 0;
    const unsigned one = 1;
    const unsigned long long first = zor_get_cpu_counter();
    // A register is added, not a constant: processors exist that fold additions of constants.
    asm volatile("1:\n\t.rept 64\n\tadd %2, %0\n\t.endr\n\tsub $1, %1\n\tjnz 1b"
                 : "+r"(sum), "+r"(blocks)
                 : "r"(one)
                 : "cc");
    const unsigned long long last = zor_get_cpu_counter();
    return static_cast<long long>(last - first) * bxCpuTicker::getClockFactor();
}
