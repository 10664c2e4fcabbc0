#include "session/bxstrict.h"

#include "session/bxgiven.h"
#include "session/bxyesno.h"
#include "timing/bxexception.h"

namespace {

constexpr char settingName[] = "Strict";

} // namespace

bool bxIsStrict() {
    // Also asked after a run that has not come to its settings, or has left their section.
    bxString text;
    if (!g_istrm.dataList().get(settingName, text) && g_istrm.iniFile())
        text = g_istrm.iniFile()->read(bxOwnSection, settingName, "");
    if (text.empty())
        return false;
    bxYesNo strict(false, settingName);
    try {
        strict.translate(text);
    } catch (const bxException&) {
        return true;
    }
    return strict.value();
}

void bxReadStrict() {
    bool unused = false;
    bxReadYesNo(settingName, unused);
}
