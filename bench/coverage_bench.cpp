// What the intervals of the precise mode are worth where the truth is known: on simulated series of slices.
//
//     coverage_bench <series of each kind>
//
// Prints csv: for each kind of series and each accuracy that ends it, the share of the series whose interval
// holds the truth, and how many slices they had.
#include "timing_simulated.h"

#include <cstdio>
#include <cstdlib>

namespace {

/** Slices of short calls in 10 ms. */
constexpr int mostSlices = 93;

void simulate(const Simulated::Kind& kind, double accuracy, int series) {
    Simulated simulated(kind, 20); // another seed than that of the test
    long held = 0, slices = 0;
    for (int i = 0; i < series; ++i) {
        const bxPreciseFigure figure = simulated.series(accuracy, mostSlices);
        held += figure.low <= Simulated::truth && Simulated::truth <= figure.high;
        slices += figure.slices;
    }
    std::printf("%s,%g,%d,%.5f,%.1f\n", kind.name, accuracy, series, static_cast<double>(held) / series,
                static_cast<double>(slices) / series);
}

} // namespace

int main(int argc, char** argv) {
    const int series = argc == 2 ? std::atoi(argv[1]) : 0;
    if (series <= 0) {
        std::fprintf(stderr, "usage: coverage_bench <series of each kind>\n");
        return 2;
    }
    std::printf("kind,accuracy,series,held,slices\n");
    for (const Simulated::Kind& kind : Simulated::kinds)
        for (const double accuracy : Simulated::accuracies)
            simulate(kind, accuracy, series);
    return 0;
}
