#include "timing/bxstatistic.h"

#include "timing/bxfiguretext.h"
#include "timing/bxtimingtext.h"

using bxTimingText::traced;
using bxTimingText::write;

bxTimingFigures bxTimeCallByCall(const bxTimingSettings& settings, const bxStatSampler& sampler) {
    write(INFO, "    Statistical method:\n", "        minCalls   = ", settings.statMinCalls, "\n",
          "        maxClocks  = ", bxClocksText(settings.statMaxClocks), "\n");
    bxTimingFigures figures;
    figures.countedCalls = settings.statMinCalls;
    traced("runTimFuncStat", [&] {
        const bxSample sample = sampler(figures.countedCalls, settings.statMaxClocks);
        figures.add(sample, figures.countedCalls);
    });
    figures.actualAccuracy = 0;
    figures.found = true;
    write(INFO, "        numCalls   = ", figures.countedCalls, "\n",
          "        funcClocks = ", figures.funcClocks, "\n",
          "        result     = ", bxResultString(figures.result), "\n");
    return figures;
}
