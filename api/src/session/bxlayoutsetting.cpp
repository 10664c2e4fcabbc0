#include "session/bxlayoutsetting.h"

#include "framework/bxrun.h"
#include "session/bxgiven.h"
#include "timing/bxexception.h"

void bxReadLayouts(bool batch) {
    constexpr int most = 100; // each is a process
    bxReadNumber("Layouts", g_run.layouts, 1, most);
    if (g_run.layouts > 1 && !batch)
        throw bxException(bxString("Layouts = ") << g_run.layouts << " needs batch mode (-B)");
}
