// Time of the pieces of the harness whose work grows with its input, for doubled and doubled sizes.
//
//     growth_bench [share of the full sizes, 0 to 1]
//
// Prints csv: piece, what n counts, n, seconds of processor time (the least of several repetitions). Sizes go
// from a sixteenth of the full one to four times it, so that the passage from one cache to the next can be
// told from growth.
#include "kv.h"
#include "parameters/bxinifile.h"
#include "session/bxsession.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;

const fs::path& scratch() {
    static const fs::path directory =
        fs::temp_directory_path() / ("growth_bench." + std::to_string(getpid()));
    return directory;
}

/** Processor time of this process so far, in seconds: what other processes do is not in it. */
double processorTime() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) * 1e-9;
}

/** Seconds of `work`. */
template <class Work>
double seconds(Work work) {
    const double start = processorTime();
    work();
    return processorTime() - start;
}

/** 0, 1, ... n - 1 in a mixed order. */
std::vector<int> mixed(int n) {
    std::vector<int> order(static_cast<std::size_t>(n));
    for (int i = 0; i < n; ++i)
        order[static_cast<std::size_t>(i)] = i;
    std::shuffle(order.begin(), order.end(), std::mt19937(4711));
    return order;
}

int callsNothing() {
    return 0;
}

/** Tests of functions with names of the usual form, in a mixed order. */
struct Tests {
    explicit Tests(int n) {
        for (const int i : mixed(n)) {
            const std::string name = "zorsFunction" + std::to_string(i) + "_32f";
            owned.push_back(std::make_unique<kvTest>(callsNothing, nullptr, nullptr, nullptr, name.c_str(),
                                                     "tests.cpp", "kvTest//KV_REG"));
            list.push_back(owned.back().get());
        }
    }
    std::vector<std::unique_ptr<kvTest>> owned;
    bxTestList list;
};

double sortTests(int n) {
    Tests tests(n);
    return seconds([&] { tests.list.sortFunc(); });
}

double selectTests(int n) {
    Tests tests(n);
    bxConditions conditions;
    for (const char* pattern : {"Function12", "Function7", "Function99"})
        conditions.push_back(new RunCondition_f(pattern));
    conditions.push_back(new RunCondition_fNot("123"));
    int selected = 0;
    const double time = seconds([&] {
        for (bxTest* test : tests.list)
            selected += test->tobeRun(conditions);
    });
    return selected > 0 ? time : -1;
}

/** Reads the file and asks for every key. */
double readIniFile(int n) {
    const fs::path path = scratch() / "keys.ini";
    {
        std::ofstream file(path);
        file << "[Section]\n";
        for (int i = 0; i < n; ++i)
            file << "Key" << i << "=" << i << " // comment\n";
    }
    int found = 0;
    const double time = seconds([&] {
        bxIniFile ini;
        ini.open(path.c_str(), false);
        for (const int i : mixed(n))
            found += ini.read("Section", ("Key" + std::to_string(i)).c_str(), "") == bxString() << i;
    });
    return found == n ? time : -1;
}

/** The command line of a session, with its report of every key. */
class CommandLine : public bxSession {
  public:
    double parse(std::vector<std::string>& words) {
        std::vector<char*> pointers;
        for (std::string& word : words)
            pointers.push_back(word.data());
        return seconds([&] { parseCommandLine(static_cast<int>(pointers.size()), pointers.data()); });
    }
};

double parseSettings(int n) {
    std::vector<std::string> words{"growth_bench", "-B"};
    for (int i = 0; i < n; ++i)
        words.push_back("-dParameter" + std::to_string(i) + "=1 2 3");
    CommandLine session;
    return session.parse(words);
}

/** Rows of a result table, none like another, and the check at their end. */
double writeRows(int n) {
    bxCStream table;
    if (!table.addStream((scratch() / "rows.csv").c_str(), false))
        return -1;
    bool identical = true;
    const double time = seconds([&] {
        table.identicalLinesStart(11);
        for (int i = 0; i < n; ++i) {
            for (const char* cell : {"zorsFunction", "32f", "I", "64", "long", "12"})
                table << cell;
            table << (bxString() << i);
            for (int column = 7; column < 16; ++column)
                table << "-";
            table.lineOut(16);
        }
        identical = table.identicalLinesStop();
    });
    return identical ? -1 : time;
}

/** All blocks live at once, each looked up, and freed in a mixed order. */
double allocateBlocks(int n) {
    std::vector<void*> blocks;
    int known = 0;
    const std::vector<int> order = mixed(n);
    const double time = seconds([&] {
        for (int i = 0; i < n; ++i)
            blocks.push_back(bxMalloc(256, 0, 0, nullptr));
        for (const int i : order)
            known += bxMallocInfo(blocks[static_cast<std::size_t>(i)], nullptr, nullptr);
        for (const int i : order)
            bxFree(blocks[static_cast<std::size_t>(i)]);
    });
    return known == n ? time : -1;
}

struct Piece {
    const char* name;
    const char* unit;
    double (*run)(int n); /**< seconds; negative when the work was not done */
    int full;             /**< the size that it is meant to bear */

    int size(int doubling, double share) const {
        return static_cast<int>(std::ldexp(full * share, doubling));
    }
};

constexpr Piece pieces[] = {
    {"sort tests", "tests", sortTests, 10'000},
    {"select tests", "tests", selectTests, 10'000},
    {"read an ini file", "keys", readIniFile, 50'000},
    {"parse -d settings", "settings", parseSettings, 10'000},
    {"write table rows", "rows", writeRows, 100'000},
    {"live blocks", "blocks", allocateBlocks, 10'000},
};

constexpr int doublings[] = {-4, -3, -2, -1, 0, 1, 2};

/** Seconds for each size, the least of some rounds over all of them; negative when the work was not done. */
std::array<double, std::size(doublings)> leastSeconds(const Piece& piece, double share) {
    constexpr int rounds = 7;
    std::array<double, std::size(doublings)> least;
    least.fill(HUGE_VAL);
    for (int round = 0; round < rounds; ++round)
        for (std::size_t i = 0; i < least.size(); ++i)
            least[i] = std::min(least[i], piece.run(piece.size(doublings[i], share)));
    return least;
}

} // namespace

int main(int argc, char** argv) {
    const double share = argc > 1 ? std::atof(argv[1]) : 1;
    fs::create_directories(scratch());
    int status = 0;
    std::printf("piece,unit,n,seconds\n");
    for (const Piece& piece : pieces) {
        const auto seconds = leastSeconds(piece, share);
        for (std::size_t i = 0; i < seconds.size(); ++i) {
            std::printf("%s,%s,%d,%.9f\n", piece.name, piece.unit, piece.size(doublings[i], share),
                        seconds[i]);
            if (seconds[i] < 0)
                status = 1;
        }
        std::fflush(stdout);
    }
    fs::remove_all(scratch());
    return status;
}
