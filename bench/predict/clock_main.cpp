// Times the blocks of a decoder while it decodes:
//
//     mp3_clock STREAM ROUNDS
//
// writes a line for each block: name, calls a decoding, microseconds of all calls together. A decoder makes
// the same calls each time: each call counts with the median of its times in all rounds, so that whatever
// interrupts a round does not count. What reading the counter adds is measured by timing nothing, and taken
// off.
#include "blocks.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace {

long long median(std::vector<long long>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

/** Ticks that timing a call of nothing takes. */
long long emptyTicks() {
    std::vector<long long> all;
    for (int i = 0; i < 10001; ++i) {
        const unsigned long long start = zor_get_cpu_counter();
        __asm__ volatile("" : : : "memory");
        all.push_back(static_cast<long long>(zor_get_cpu_counter() - start));
    }
    return median(all);
}

/** A moment by both clocks, so that two of them give the counter's rate. */
struct Moment {
    std::chrono::steady_clock::time_point time = std::chrono::steady_clock::now();
    unsigned long long ticks = zor_get_cpu_counter();
};

double ticksPerMicrosecond(const Moment& from, const Moment& to) {
    const std::chrono::duration<double, std::micro> passed = to.time - from.time;
    return static_cast<double>(to.ticks - from.ticks) / passed.count();
}

} // namespace

int main(int argc, char* argv[]) {
    using namespace predict;
    if (argc != 3)
        return 2;
    const int rounds = std::atoi(argv[2]);
    std::vector<std::vector<std::vector<long long>>> ofRounds(Tally::all().size()); // block, call, round
    const long long empty = emptyTicks();
    const Moment start;
    for (int round = 0; round < rounds; ++round) {
        for (Tally* tally : Tally::all())
            tally->ticks.clear();
        if (!decode(argv[1], Watch::time))
            return 1;
        for (std::size_t block = 0; block < ofRounds.size(); ++block) {
            const std::vector<long long>& ticks = Tally::all()[block]->ticks;
            ofRounds[block].resize(ticks.size());
            for (std::size_t call = 0; call < ticks.size(); ++call)
                ofRounds[block][call].push_back(ticks[call]);
        }
    }
    const double rate = ticksPerMicrosecond(start, Moment());
    for (std::size_t block = 0; block < ofRounds.size(); ++block) {
        long long total = 0;
        for (std::vector<long long>& call : ofRounds[block])
            total += median(call) - empty;
        std::printf("%s %zu %.3f\n", Tally::all()[block]->name, ofRounds[block].size(),
                    static_cast<double>(total) / rate);
    }
    return 0;
}
