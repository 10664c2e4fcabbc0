#include "session/bxlayoutsetting.h"

#include "framework/bxrun.h"
#include "session/bxgiven.h"
#include "session/bxwholenumber.h"
#include "timing/bxexception.h"

void bxReadLayouts(bool batch) {
    constexpr int most = 100; // each is a process
    bxWholeNumber layouts(g_run.layouts, "Layouts", 1, most);
    bxReadGiven(layouts, [](int count) { g_run.layouts = count; });
    if (g_run.layouts > 1 && !batch)
        throw bxException(bxString("Layouts = ") << g_run.layouts << " needs batch mode (-B)");
}
