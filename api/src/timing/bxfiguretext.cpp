#include "timing/bxfiguretext.h"

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
