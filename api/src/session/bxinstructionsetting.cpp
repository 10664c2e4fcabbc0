#include "session/bxinstructionsetting.h"

#include "parameters/bxdefault.h"
#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "timing/bxtool.h"

namespace {

/** A number from 1 on. */
class Positive : public bxDefault<int> {
  public:
    using bxDefault<int>::bxDefault;
    int stringToValue(bxString& text) const override {
        const int value = bxDefault<int>::stringToValue(text);
        if (value < 1)
            text.setFailed(true);
        return value;
    }

  protected:
    bxString allowedText() const override { return "whole numbers from 1 on"; }
};

} // namespace

void bxReadInstructions() {
    g_istrm.expect("InstructionsMost");
    bxMapDefault<bool> count(g_tool.countInstructions, "Instructions", "");
    count[true] = "yes";
    count[false] = "no";
    bxReadGiven(count, [](bool on) { g_tool.countInstructions = on; });
    if (!g_tool.countInstructions)
        return;
    Positive most(g_tool.mostInstructions, "InstructionsMost", "");
    bxReadGiven(most, [](int steps) { g_tool.mostInstructions = steps; });
}
