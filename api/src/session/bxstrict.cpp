#include "session/bxstrict.h"

#include "parameters/bxmap.h"
#include "session/bxgiven.h"
#include "timing/bxexception.h"

namespace {

constexpr char settingName[] = "Strict";

/** The setting with its two values. */
class StrictSetting : public bxMapDefault<bool> {
  public:
    StrictSetting() : bxMapDefault<bool>(false, settingName, "") {
        (*this)[true] = "yes";
        (*this)[false] = "no";
    }
};

} // namespace

bool bxIsStrict() {
    // Also asked after a run that has not come to its settings, or has left their section.
    bxString text;
    if (!g_istrm.dataList().get(settingName, text) && g_istrm.iniFile())
        text = g_istrm.iniFile()->read(bxOwnSection, settingName, "");
    if (text.empty())
        return false;
    StrictSetting strict;
    try {
        strict.translate(text);
    } catch (const bxException&) {
        return true;
    }
    return strict.value();
}

void bxReadStrict() {
    StrictSetting strict;
    bxReadGiven(strict, [](bool) {});
}
