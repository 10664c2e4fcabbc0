#include "session/bxgiven.h"

bool bxIsGiven(const bxString& name) {
    bxString value;
    if (g_istrm.dataList().get(name, value))
        return true;
    bxIniFile* const ini = g_istrm.iniFile();
    return ini && !ini->read(g_istrm.iniSection(), name, "").empty();
}
