#include "session/bxinstructionsetting.h"

#include "framework/bxstepfile.h"
#include "output/bxpaths.h"
#include "parameters/bxdefault.h"
#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "session/bxwholenumber.h"
#include "timing/bxexception.h"
#include "timing/bxtool.h"

namespace {

/** A file's name. */
class FileName : public bxDefault_NSC<bxString> {
  public:
    using bxDefault_NSC<bxString>::bxDefault_NSC;
    bxString valueToString(bxString value) const override { return value; }
    bxString stringToValue(bxString& text) const override {
        text.setFailed(text.empty());
        return text;
    }

  protected:
    bxString allowedText() const override { return "the name of a file"; }
};

void openStepsFile(const bxString& name) {
    const bxString path = bxPaths::genOutPath(name, ".steps");
    if (!bxStepFile::open(path))
        throw bxException("InstructionsFile = " + path + " cannot be written");
    g_tool.stepsFile = path;
}

} // namespace

void bxReadInstructions() {
    g_istrm.expect("InstructionsMost");
    g_istrm.expect("InstructionsFile");
    g_istrm.expect("InstructionsRow");
    g_istrm.expect("InstructionsSteps");
    bxMapDefault<bool> count(g_tool.countInstructions, "Instructions", "");
    count[true] = "yes";
    count[false] = "no";
    bxReadGiven(count, [](bool on) { g_tool.countInstructions = on; });
    if (!g_tool.countInstructions)
        return;
    bxWholeNumber most(g_tool.mostInstructions, "InstructionsMost", 1);
    bxReadGiven(most, [](int steps) { g_tool.mostInstructions = steps; });
    FileName file("", "InstructionsFile", "");
    bxReadGiven(file, openStepsFile);
    bxMapDefault<bool> steps(true, "InstructionsSteps", "");
    steps[true] = "yes";
    steps[false] = "no";
    bxReadGiven(steps, [](bool written) { bxStepFile::m_detailed = written; });
    bxWholeNumber row(1, "InstructionsRow", 1);
    bxReadGiven(row, [](int number) { bxStepFile::m_row = number; });
}
