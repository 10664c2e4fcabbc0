#include "framework/bxcomment.h"

#include "framework/bxlayoutspread.h"
#include "framework/bxtestcalls.h"
#include "output/bxtable.h"
#include "timing/bxfiguretext.h"
#include "timing/bxinstructions.h"
#include "timing/bxtool.h"

#include <cstdio>

namespace {

bxString formatted(const char* format, auto... values) {
    char text[96];
    std::snprintf(text, sizeof text, format, values...);
    return text;
}

/** More digits than the figure's own cell has, since the mode is used for small differences. */
bxString preciseText(const bxTool& tool) {
    const bxPreciseFigure& figure = tool.preciseFigure;
    if (!tool.found || !figure.measured())
        return "";
    if (figure.nothing)
        return bxTable::nothing;
    bxString text =
        formatted("slices=%d dropped=%d clocks=%.6g ", figure.slices, figure.dropped, figure.clocks);
    text << bxTable::interval
         << (figure.known ? formatted("%.6g..%.6g", figure.low, figure.high) : bxString(bxTable::unknown));
    text << " " << bxTable::coreClocks << formatted("%.5f ", figure.coreClocksPerTick) << bxTable::throughput
         << formatted("%.3f", figure.throughput);
    if (figure.core >= 0)
        text << " core=" << figure.core;
    if (!figure.oneClockAdditions())
        text << formatted(" imul/add=%.2f", figure.multiplication);
    if (figure.lost > 0)
        text << " " << bxTable::shared << bxAccuracyText(figure.lost);
    if (figure.known && !figure.reached)
        text << " " << bxTable::accuracy << bxAccuracyText(tool.actualAccuracy);
    return text;
}

bxString instructionText(const bxTool& tool, const bxInstructionCount& instructions) {
    bxString text = instructions.text();
    if (instructions.known() && tool.preciseFigure.clocks > 0)
        text << " " << bxTable::perClock
             << static_cast<double>(instructions.instructions) / tool.preciseFigure.clocks;
    return text;
}

} // namespace

void bxCompleteComment(bxTool& tool, const bxInstructionCount& instructions, const bxCallFigures& calls,
                       const bxLayoutSpread& layouts) {
    for (const bxString& text : {preciseText(tool), instructionText(tool, instructions), layouts.text(),
                                 calls.single.text(), calls.first.text()})
        if (!text.empty())
            tool.info << (tool.info.empty() ? "" : " ") << text;
}
