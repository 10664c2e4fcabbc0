#include "session/bxprecisesetting.h"

#include "output/bxostream.h"
#include "parameters/bxdefault.h"
#include "session/bxgiven.h"
#include "timing/bxtool.h"

namespace {

/** Per cent, with decimals. */
class PerCent : public bxDefault_NSC<double> {
  public:
    using bxDefault_NSC<double>::bxDefault_NSC;
    bxString valueToString(double value) const override { return bxString() << value; }
    double stringToValue(bxString& text) const override {
        constexpr double most = 50;
        const bxReading<double> reading = bxReadDouble(text);
        text.setFailed(!(reading.good && reading.value > 0 && reading.value <= most));
        return reading.value;
    }
    bool readsWhole(const bxString& text) const override { return bxReadDouble(text).whole; }

  protected:
    bxString allowedText() const override { return "numbers above 0, at most 50"; }
};

} // namespace

void bxReadPrecise() {
    g_istrm.expect("PreciseAccuracy");
    bxReadYesNo("Precise", g_tool.precise);
    if (!g_tool.precise)
        return;
    g_ostrm << ERR << " Figures in clocks of the core (one addition each), not of the counter\n"
            << endMessage;
    PerCent accuracy(100 * g_tool.accuracy, "PreciseAccuracy", "");
    bxReadGiven(accuracy, [](double perCent) { g_tool.accuracy = perCent / 100; });
}
