/** \file
 * Titles, marks and labels of the csv tables: the harness writes them, the companion programs read them. Data
 * only.
 */
#ifndef BXTABLE_H
#define BXTABLE_H

#include <array>

namespace bxTable {

using Text = const char*;

// Columns of the result table.
inline constexpr Text function = "Function";
inline constexpr Text types = "Types";
inline constexpr Text descriptor = "Descriptor";
inline constexpr char parameterLetter = 'P'; /**< "P1" to "P8" */
inline constexpr int parameters = 8;
inline constexpr Text comment = "Comment";
inline constexpr Text clocks = "Clocks";
inline constexpr Text unit = "per";
inline constexpr Text microseconds = "Time (usec)";
inline constexpr Text mflops = "MFlops";
inline constexpr Text interest = "Interest";

// Cells.
inline constexpr Text empty = "-";
inline constexpr Text hot = "Hot";               /**< in the column "Interest" */
inline constexpr Text nameLine = "parmNames";    /**< in "Comment": the line holds names of parameters */
inline constexpr Text deprecated = "deprecated"; /**< in "Comment" */
inline constexpr Text inCache = "inCache";       /**< "Comment" begins with it */
inline constexpr Text outOfCache = "outofCache"; /**< "Comment" begins with it */
inline constexpr Text loops = "nLps=";           /**< in "Comment": timed calls */
inline constexpr Text calls = "nCalls=";         /**< in "Comment": timed calls of the Statistic method */
inline constexpr Text accuracy = "acc=";         /**< in "Comment": the wanted accuracy was missed, percent */
inline constexpr Text interval = "95%=";         /**< in "Comment": from..to, of the precise mode */
inline constexpr Text unknown = "unknown";       /**< in the interval's place: too few undisturbed slices */
inline constexpr Text nothing = "calls take no time"; /**< in "Comment": they compile to nothing */
inline constexpr Text shared = "shared="; /**< in "Comment": share of the core that others took, percent */
inline constexpr Text coreClocks = "core/counter="; /**< in "Comment": clocks of the core in a count of the
                                                       counter; "Clocks" are the core's then */
inline constexpr Text throughput = "adds/clock="; /**< in "Comment": independent additions in a core clock */

// In "Comment": the instructions of a call.
inline constexpr Text instructions = "instr="; /**< their number, or "?" and why there is none */
inline constexpr Text steps = "steps=";        /**< where repeated string instructions make them more */
inline constexpr Text code = "code=";          /**< digest of the bytes that were executed */
inline constexpr Text perClock = "ipc=";       /**< instructions in a core clock */

// In "Comment": what single calls cost.
inline constexpr Text singleCalls = "calls="; /**< timed one by one, or "?" and why not */
inline constexpr Text leastCall = "least=";
inline constexpr Text medianCall = "median=";
inline constexpr Text percent99 = "99%="; /**< 99 % of the calls are not longer */
inline constexpr Text permille999 = "99.9%=";
inline constexpr Text mostCall = "most=";
inline constexpr Text interruptedCalls = "interrupted="; /**< calls that the system interrupted */
inline constexpr Text interruptedKept = "kept";     /**< behind it: they are in the figures, being most */
inline constexpr Text longestInterrupted = "upto="; /**< the longest of these */
inline constexpr Text histogram = "hist=";  /**< calls by bins of one ratio, from the least to the most */
inline constexpr Text firstCall = "first="; /**< a call with nothing in the caches */

// In "Comment": how far the figure depends on where code, data and stack lie.
inline constexpr Text layouts = "layouts=";     /**< that gave a figure, "/" of how many where some did not */
inline constexpr Text layoutRange = "between="; /**< least..most */
inline constexpr Text layoutMedian = "middle=";
inline constexpr Text layoutSpread = "spread="; /**< most minus least, percent of the median */
inline constexpr Text codeFixed = "code=fixed"; /**< at the same addresses in all */

// Labels of the head of every table; "Library" may stand several times.
inline constexpr Text cpu = "CPU";
inline constexpr Text os = "OS";
inline constexpr Text computer = "Computer";
inline constexpr Text library = "Library";
inline constexpr Text start = "Start";

/** Columns of the summary table. */
namespace summary {
inline constexpr Text kind = "Class";
inline constexpr Text test = "Test";
inline constexpr Text seconds = "Time (sec.)";
inline constexpr Text source = "SrcName";
inline constexpr Text result = "Result";
inline constexpr Text program = "ExeName";
inline constexpr std::array columns{function, kind,    "Control87", "Status87", "ControlSSX", "StatusSSX",
                                    test,     seconds, source,      result,     program};
inline constexpr Text interrupted = "INTERRUPTED"; /**< result of a test that was cut short */
inline constexpr Text end = "END_DATA";            /**< the counts follow */
} // namespace summary

// What stands behind a title to name the files of a run.
inline constexpr Text nameFile = "_name.csv";
inline constexpr Text summaryFile = "_sum.csv";
inline constexpr Text memoryFile = "_mem.csv";

} // namespace bxTable

#endif
