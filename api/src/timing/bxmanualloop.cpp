#include "timing/bxmanualloop.h"

#include "timing/bxtimingtext.h"

using bxTimingText::traced;
using bxTimingText::write;

bxTimingFigures bxTimeManually(const bxTimingSettings& settings, const bxLoopSampler& sampler) {
    write(INFO, "    Manual method: \n", "        numLoops   = ", settings.manualLoops, "\n");
    bxTimingFigures figures;
    figures.loops = settings.manualLoops;
    traced("runTimFunc", [&] { figures.add(sampler(figures.loops), figures.loops); });
    figures.actualAccuracy = 0;
    figures.found = true;
    write(INFO, "        funcClocks = ", figures.funcClocks, "\n",
          "        result     = ", bxResultString(figures.result), "\n");
    return figures;
}
