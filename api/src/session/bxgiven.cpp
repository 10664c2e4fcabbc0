#include "session/bxgiven.h"

#include "framework/bxtest.h"
#include "framework/bxtestlist.h"
#include "output/bxostream.h"
#include "parameters/bxunused.h"

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
