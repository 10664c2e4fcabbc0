#include "session/bxinstructionsetting.h"

#include "framework/bxrun.h"
#include "framework/bxstepfile.h"
#include "output/bxpaths.h"
#include "parameters/bxdefault.h"
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
    bxReadYesNo("Instructions", g_tool.countInstructions);
    if (!g_tool.countInstructions)
        return;
    bxReadNumber("InstructionsMost", g_tool.mostInstructions, 1);
    FileName file("", "InstructionsFile", "");
    bxReadGiven(file, openStepsFile);
    bxReadYesNo("InstructionsSteps", g_run.steps);
    bxWholeNumber row(1, "InstructionsRow", 1);
    bxReadGiven(row, [](int number) { g_run.onlyRow = number; });
}
