#include "session/bxgiven.h"

#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxostream.h"
#include "parameters/bxunused.h"
#include "session/bxwholenumber.h"
#include "session/bxyesno.h"

void bxReadYesNo(const char* name, bool& setting) {
    bxYesNo parm(setting, name);
    bxReadGiven(parm, [&setting](bool on) { setting = on; });
}

void bxReadNumber(const char* name, int& setting, int least, int most) {
    bxWholeNumber parm(setting, name, least, most);
    bxReadGiven(parm, [&setting](int number) { setting = number; });
}

bool bxReportUnused(const bxTestList& tests) {
    constexpr int most = 20; // lines: an ini file may be that of another program
    bxStringList functions;
    for (const bxTest* test : tests)
        functions.push_back(test->name);
    int count = 0;
    const bxUnused unused = bxFindUnused(g_istrm, functions);
    for (const bxString& line : unused.lines)
        if (count++ < most)
            g_ostrm << ERR << line << endMessage;
    if (count > most)
        g_ostrm << ERR << "-- " << count - most << " more are not used\n" << endMessage;
    return unused.unknownData;
}
