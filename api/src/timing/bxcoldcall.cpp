#include "timing/bxcoldcall.h"

#include "output/bxtable.h"
#include "system/bxcacheflush.h"
#include "system/bxprobes.h"
#include "timing/bxcallscope.h"
#include "timing/bxcores.h"
#include "timing/bxonecall.h"
#include "timing/bxsampler.h"
#include "timing/bxstatistics.h"

#include <algorithm>
#include <cstdio>

namespace {

constexpr int tries = 40;

/** One try: counts of the call without those of the reads. */
bxOneCall tryCold(const bxPreparedCall& function, const bxCacheFlush& flush, bool ordered) {
    function.prepare();
    flush();
    // What times is warm again, so that its own misses are not the function's.
    bxCallOnce(bxCallNothing, ordered);
    const long long reads = bxCallOnce(bxCallNothing, ordered).ticks;
    bxOneCall one = bxCallOnce(function.call, ordered);
    one.ticks = std::max(one.ticks - reads, 0LL);
    return one;
}

} // namespace

bxString bxColdFigure::text() const {
    if (!problem.empty())
        return bxString() << bxTable::firstCall << "?" << problem;
    if (!(clocks > 0))
        return {};
    char number[64];
    std::snprintf(number, sizeof number, "%.0f", clocks);
    return bxString() << bxTable::firstCall << number;
}

bxColdFigure bxTimeColdCalls(const bxPreparedCall& function, int priority, int& status) {
    const bxPinnedCore pinned;
    const bool ordered = zor_is_wni_extension() != 0;
    {
        const bxCallScope scope(bxCallScope::measured, priority);
        function.prepare();
        status = function.call(); // what it has mapped by then is known to the flush
    }
    const bxCacheFlush flush;
    bxColdFigure figure;
    if (!flush.possible()) {
        figure.problem = "noflush";
        return figure;
    }
    std::vector<double> clean, all;
    for (int i = 0; i < tries && status >= 0; ++i) {
        bxOneCall one;
        {
            const bxCallScope scope(bxCallScope::measured, priority);
            one = tryCold(function, flush, ordered);
        }
        if (one.status != 0)
            status = one.status;
        all.push_back(static_cast<double>(one.ticks));
        if (!one.interrupted)
            clean.push_back(all.back());
        if (bxCallSampler::m_between)
            bxCallSampler::m_between();
    }
    if (status < 0)
        figure.problem = "status";
    else
        figure.clocks = bxMedian(2 * clean.size() >= all.size() ? clean : all);
    return figure;
}
