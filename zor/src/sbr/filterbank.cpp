#include "sbr/filterbank.h"

#include "tables/sbr_qmf_window.h"

#include <algorithm>
#include <complex>
#include <numbers>

namespace zor {

namespace {

using std::numbers::pi;

constexpr const auto& windowTable = tables::sbr_qmf_window::c;

void set(Split table, int i, std::complex<double> value) {
    table.re[i] = static_cast<float>(value.real());
    table.im[i] = static_cast<float>(value.imag());
}

void fillTables(const OddFourierPlan& plan, double phase, double gain) {
    const int bands = plan.bands;
    for (int n = 0; n < bands; ++n)
        set(plan.inner, n, std::polar(1.0, -pi * n / (2 * bands)));
    for (int l = 0; l < bands; ++l) {
        const bool even = l < bands / 2;
        const int band = even ? 2 * l : 2 * bands - 1 - 2 * l;
        set(plan.outer, l, std::polar(gain, (even ? -1 : 1) * pi / bands * (band + 0.5) * phase));
    }
}

void placeOddFourier(OddFourierPlan& plan, int bands, double phase, double gain, Arena& arena) {
    plan.bands = bands;
    placeFft(plan.fft, bands, arena);
    for (Split OddFourierPlan::*part :
         {&OddFourierPlan::inner, &OddFourierPlan::outer, &OddFourierPlan::data, &OddFourierPlan::work})
        if (float* floats = arena.take<float>(static_cast<std::size_t>(splitFloats(bands))))
            plan.*part = splitOver(floats, bands);
    if (!arena.measuring())
        fillTables(plan, phase, gain);
}

} // namespace

void placeSbrAnalysis(SbrAnalysis& filter, double phase, Arena& arena) {
    constexpr int length = SbrAnalysis::windowLength;
    placeOddFourier(filter.plan, sbrAnalysisBands, phase, 2, arena);
    filter.window = arena.take<float>(length);
    filter.line = arena.take<float>(2 * SbrAnalysis::past);
    if (arena.measuring())
        return;
    for (int i = 0; i < length; ++i)
        filter.window[i] = static_cast<float>(windowTable[2 * (length - 1 - i)]);
    std::fill_n(filter.line, 2 * SbrAnalysis::past, 0.0f);
}

void placeSbrSynthesis(SbrSynthesis& filter, int bands, double phase, double gain, Arena& arena) {
    const int length = SbrSynthesis::ringSlots * bands;
    placeOddFourier(filter.plan, bands, phase, gain, arena);
    filter.window = arena.take<float>(static_cast<std::size_t>(length));
    filter.ring = arena.take<float>(static_cast<std::size_t>(2 * length));
    filter.newest = 0;
    if (arena.measuring())
        return;
    for (int i = 0; i < length; ++i)
        filter.window[i] = static_cast<float>(windowTable[i * (640 / length)]);
    std::fill_n(filter.ring, 2 * length, 0.0f);
}

} // namespace zor
