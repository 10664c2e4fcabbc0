#include "mp3/psych_tables.h"

#include <array>
#include <cmath>
#include <numbers>
#include <utility>

namespace zor::mp3 {
namespace {

/** Critical-band rate in Bark (E. Zwicker, E. Terhardt 1980). */
double bark(double hz) {
    return 13 * std::atan(0.76e-3 * hz) + 3.5 * std::atan(hz / 7500 * (hz / 7500));
}

/** Threshold in quiet in dB of sound pressure level (E. Terhardt 1979), held below 50 Hz and above 68 dB. */
double quietLevel(double hz) {
    const double kHz = std::max(hz, 50.0) / 1000;
    const double level = 3.64 * std::pow(kHz, -0.8) - 6.5 * std::exp(-0.6 * (kHz - 3.3) * (kHz - 3.3)) +
                         1e-3 * std::pow(kHz, 4);
    return std::min(level, 68.0);
}

/** Sound pressure level of a sine of full scale: the range of 16 bits. */
constexpr double fullScaleLevel = 96;

/** dB by which maskers of this critical-band rate exceed noise at least; rates after 11172-3 table D.3. */
double leastSnr(double rate) {
    static constexpr std::pair<double, double> steps[] = {{2.5, 24.5}, {3.5, 20}, {5, 18},
                                                          {7, 12},     {10, 6},   {13, 3}};
    for (const auto& [end, level] : steps)
        if (rate < end)
            return level;
    return 0;
}

/**
 * Spreading function of model II, in power; `distance` is masked minus masker in Bark. Layer III stretches it
 * by 1.5 upwards and 3 downwards.
 */
double spreading(double distance) {
    const double x = distance * (distance >= 0 ? 1.5 : 3.0);
    const double dip = x >= 0.5 && x <= 2.5 ? 8 * ((x - 0.5) * (x - 0.5) - 2 * (x - 0.5)) : 0;
    const double y = 15.811389 + 7.5 * (x + 0.474) - 17.5 * std::sqrt(1 + (x + 0.474) * (x + 0.474));
    return y < -60 ? 0 : std::pow(10, (dip + y) / 10);
}

void cutPartitions(Partitions& partitions, int fft, double hz) {
    constexpr double width = 1.0 / 3;
    const double lineHz = hz / fft;
    const int end = fft / 2 + 1;
    int line = 0;
    partitions.count = 0;
    while (line < end && partitions.count < maxPartitions - 1) {
        const double start = bark(std::max(line - 0.5, 0.0) * lineHz);
        partitions.begin[partitions.count++] = line++;
        while (line < end && bark((line - 0.5) * lineHz) - start < width)
            ++line;
    }
    if (line < end)
        partitions.begin[partitions.count++] = line;
    partitions.begin[partitions.count] = end;
}

void makePartitions(Partitions& partitions, int fft, double hz) {
    cutPartitions(partitions, fft, hz);
    const double lineHz = hz / fft;
    // A Hann window gives a full-scale sine the amplitude N/4 in its line and 1.5 times that energy in all.
    const double fullScale = 1.5 * std::pow(32768.0 * fft / 4, 2);
    double rate[maxPartitions];
    for (int b = 0; b < partitions.count; ++b) {
        const double first = partitions.begin[b], last = partitions.begin[b + 1] - 1;
        rate[b] = bark((first + last) / 2 * lineHz);
        const double level = std::min(quietLevel(first * lineHz), quietLevel(last * lineHz));
        partitions.quiet[b] = static_cast<float>(fullScale * std::pow(10, (level - fullScaleLevel) / 10));
        partitions.leastSnr[b] = static_cast<float>(leastSnr(rate[b]));
    }
    for (int masked = 0; masked < partitions.count; ++masked) {
        double sum = 0;
        for (int masker = 0; masker < partitions.count; ++masker)
            sum += spreading(rate[masked] - rate[masker]);
        for (int masker = 0; masker < partitions.count; ++masker)
            partitions.spread[masked][masker] =
                static_cast<float>(spreading(rate[masked] - rate[masker]) / sum);
    }
}

/** Where lines `begin` to `end` of a transform of `fft` lie, both with fractions. */
BandSpan spanOf(const Partitions& partitions, double begin, double end) {
    const auto share = [&](int b) {
        const double low = partitions.begin[b] - 0.5, high = partitions.begin[b + 1] - 0.5;
        return static_cast<float>(std::max(0.0, std::min(end, high) - std::max(begin, low)) / (high - low));
    };
    BandSpan span{0, partitions.count - 1, 0, 0};
    while (span.first < span.last && partitions.begin[span.first + 1] - 0.5 <= begin)
        ++span.first;
    while (span.last > span.first && partitions.begin[span.last] - 0.5 >= end)
        --span.last;
    span.firstShare = share(span.first);
    span.lastShare = span.last > span.first ? share(span.last) : 0;
    return span;
}

void makeWindow(float* window, int n) {
    for (int i = 0; i < n; ++i)
        window[i] = static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * (i + 0.5) / n));
}

template <int row>
const PsychTables& tablesOf() {
    static const PsychTables tables = [] {
        PsychTables made{};
        const double hz = tables::mp3_sfb_long::sample_rate_hz[row];
        makePartitions(made.longs, longFft, hz);
        makePartitions(made.shorts, shortFft, hz);
        const BandTables bands;
        const auto& longs = bands.longBoundary[row];
        const auto& shorts = bands.shortBoundary[row];
        for (int b = 0; b < longBands; ++b)
            made.longBand[b] = spanOf(made.longs, longs[b] * 512.0 / 576, longs[b + 1] * 512.0 / 576);
        for (int b = 0; b < shortBands; ++b)
            made.shortBand[b] = spanOf(made.shorts, shorts[b] * 128.0 / 192, shorts[b + 1] * 128.0 / 192);
        makeWindow(made.longWindow, longFft);
        makeWindow(made.shortWindow, shortFft);
        return made;
    }();
    return tables;
}

} // namespace

const PsychTables& psychTables(int row) {
    static constexpr const PsychTables& (*getters[])() = {tablesOf<0>, tablesOf<1>, tablesOf<2>,
                                                          tablesOf<3>, tablesOf<4>, tablesOf<5>};
    return getters[row]();
}

} // namespace zor::mp3
