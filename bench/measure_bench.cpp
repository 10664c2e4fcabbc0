// Every kernel by every method, in rounds: one row of the table for each measurement.
//
//     measure_bench <rounds> <file.csv>
//
// Methods take turns in a new order in every round, so that none has the quiet moments or always the same
// predecessor. What an addition costs at that moment, in counts of the time-stamp counter, is measured before
// and after each.
#include "kernels.h"
#include "methods.h"
#include "output/bxostream.h"
#include "system/bxenvironment.h"
#include "timing/bxfpwatch.h"
#include "truth.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

using Clock = std::chrono::steady_clock;

/** Writes the rows of one round. */
class Round {
  public:
    Round(std::FILE* table, int number, std::vector<Method>& methods)
        : m_table(table), m_number(number), m_methods(methods), m_random(static_cast<unsigned>(number)) {}

    void measure(const Kernel& kernel) {
        std::shuffle(m_methods.begin(), m_methods.end(), m_random);
        double before = ticksPerAddition();
        for (const Method& method : m_methods)
            if (method.takes(kernel) && (m_number - 1) % method.every == 0) {
                const Clock::time_point start = Clock::now();
                const Figure figure = method.measure(kernel);
                const std::chrono::duration<double, std::micro> wall = Clock::now() - start;
                const double after = ticksPerAddition();
                write(kernel, method, figure, wall.count(), before, after);
                before = after;
            }
    }

  private:
    void write(const Kernel& kernel, const Method& method, const Figure& figure, double wall, double before,
               double after) {
        std::fprintf(m_table, "%d,%s,%s,%g,%.6f,%.6f,%s,%.8g,%.8g,%.8g,%.2f\n", m_number, method.name.c_str(),
                     kernel.name.c_str(), kernel.clocks, before, after,
                     figure.coreClocks ? "core" : "counter", figure.value, figure.low, figure.high, wall);
    }

    std::FILE* m_table;
    int m_number;
    std::vector<Method>& m_methods;
    std::mt19937 m_random;
};

} // namespace

int main(int argc, char** argv) {
    const int rounds = argc == 3 ? std::atoi(argv[1]) : 0;
    std::FILE* const table = rounds > 0 ? std::fopen(argv[2], "w") : nullptr;
    if (!table) {
        std::fprintf(stderr, "usage: measure_bench <rounds> <file.csv>\n");
        return 2;
    }
    setZorEnvironment();
    zor_Init();
    registerChains();
    ticksPerNanosecond(); // it takes half a second, which is nobody's
    std::vector<Method> methods = allMethods();
    std::fprintf(table, "round,method,kernel,clocks,before,after,unit,figure,low,high,wall us\n");
    for (int number = 1; number <= rounds; ++number) {
        Round round(table, number, methods);
        forEachKernel([&](const Kernel& kernel) { round.measure(kernel); });
        std::fflush(table);
    }
    return std::fclose(table) == 0 ? 0 : 1;
}
