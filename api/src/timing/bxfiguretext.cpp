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

bxString bxReachedText(const bxTimingFigures& figures) {
    const bxPreciseFigure& figure = figures.preciseFigure;
    const bool unknown = figure.slices + figure.dropped > 0 && !figure.known;
    return unknown ? bxString("?") : bxAccuracyText(figures.actualAccuracy);
}

bxString bxClocksText(long long clocks) {
    bxString zeros;
    for (; clocks > INT_MAX; clocks /= 10)
        zeros += "0";
    return (bxString() << clocks) + zeros;
}

namespace {

bxString formatted(const char* format, auto... values) {
    char text[96];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/** More digits than the figure's own cell has, since the mode is used for small differences. */
bxString preciseText(const bxPreciseFigure& figure, int loops) {
    bxString text;
    text << bxTable::loops << loops;
    if (figure.nothing)
        return text << " " << bxTable::nothing;
    text << formatted(" slices=%d dropped=%d clocks=%.6g ", figure.slices, figure.dropped, figure.clocks)
         << bxTable::interval;
    text << (figure.known ? formatted("%.6g..%.6g", figure.low, figure.high) : bxString(bxTable::unknown));
    text << formatted(" core/counter=%.5f ", figure.coreClocksPerTick) << bxTable::throughput
         << formatted("%.3f", figure.throughput);
    if (figure.core >= 0)
        text << " core=" << figure.core;
    if (!figure.oneClockAdditions())
        text << formatted(" imul/add=%.2f", figure.multiplication);
    if (figure.lost > 0)
        text << " " << bxTable::shared << bxAccuracyText(figure.lost);
    return text;
}

} // namespace

bxString bxComment(const bxTimingSettings& settings, const bxTimingFigures& figures) {
    bxString text;
    if (!figures.found)
        return text;
    const bxPreciseFigure& figure = figures.preciseFigure;
    const bool precise = figure.nothing || figure.slices + figure.dropped > 0;
    if (precise)
        text = preciseText(figure, figures.loops);
    else if (settings.method == bxTimingSettings::methodStat)
        text << bxTable::calls << figures.countedCalls;
    else
        text << bxTable::loops << figures.loops;
    const bool missed = figures.actualAccuracy > settings.accuracy;
    if (precise ? figure.known && !figure.reached : missed)
        text << " " << bxTable::accuracy << bxAccuracyText(figures.actualAccuracy);
    return text;
}
