#include "framework/bxinfotests.h"

#include "framework/bxcpureport.h"
#include "output/bxostream.h"
#include "system/bxhost.h"
#include "system/bxprobes.h"

__bxInfoTest::__bxInfoTest(bxString testName, bxString path, bxString text)
    : bxTest(static_cast<bxFuncLoop>(nullptr), nullptr, testName, path, text) {}

void __bxInfoTest::loopData() {
    g_ostrm << ERR;
    printInformation();
    g_ostrm << endMessageFlush;
    m_currentResult = OK;
}

void __bxQuarnCpuTest::printInformation() {
    if (!zor_has_cpuid()) {
        g_ostrm << "    The processor has no CPUID instruction.\n";
        return;
    }
    const bxCpuReport report;
    g_ostrm << report.title() << PERF << report.identity() << endMessage << report.signature()
            << report.flags() << report.multiThreading() << report.cacheParms() << report.l2Features()
            << bxCpuReport::asterisks() << "\n";
}

void __bxOSTest::printInformation() {
    g_ostrm << " OS       : " << bxOS().text() << "\n";
}

void __bxHostTest::printInformation() {
    g_ostrm << " Computer : " << bxHost().name() << "\n";
}
