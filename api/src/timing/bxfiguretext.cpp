#include "timing/bxfiguretext.h"

#include "output/bxtable.h"

#include <array>
#include <climits>
#include <cstdio>

bxString bxAccuracyText(double accuracy) {
    const double percent = 100 * accuracy;
    std::array<char, 330> text; // the largest double has 309 digits
    std::snprintf(text.data(), text.size(), percent < 0.1 ? "%.2f%c" : "%.1f%c", percent, '%');
    return text.data();
}

bxString bxClocksText(long long clocks) {
    bxString zeros;
    for (; clocks > INT_MAX; clocks /= 10)
        zeros += "0";
    return (bxString() << clocks) + zeros;
}

namespace {

/** More digits than the figure's own cell has, since the mode is used for small differences. */
bxString preciseText(const bxPreciseFigure& figure, int loops) {
    char text[160];
    std::snprintf(text, sizeof text,
                  "%s%d slices=%d dropped=%d clocks=%.6g 95%%=%.6g..%.6g core/counter=%.5f %s%.3f",
                  bxTable::loops, loops, figure.slices, figure.dropped, figure.clocks, figure.low,
                  figure.high, figure.coreClocksPerTick, bxTable::throughput, figure.throughput);
    bxString all = text;
    if (figure.lost > 0)
        all << " " << bxTable::shared << bxAccuracyText(figure.lost);
    return all;
}

} // namespace

bxString bxComment(const bxTimingSettings& settings, const bxTimingFigures& figures) {
    bxString text;
    if (!figures.found)
        return text;
    const bool precise = figures.preciseFigure.slices + figures.preciseFigure.dropped > 0;
    if (precise)
        text = preciseText(figures.preciseFigure, figures.loops);
    else if (settings.method == bxTimingSettings::methodStat)
        text << bxTable::calls << figures.countedCalls;
    else
        text << bxTable::loops << figures.loops;
    if (precise ? !figures.preciseFigure.reached : figures.actualAccuracy > settings.accuracy)
        text << " " << bxTable::accuracy << bxAccuracyText(figures.actualAccuracy);
    return text;
}
