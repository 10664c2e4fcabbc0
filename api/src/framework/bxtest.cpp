#include "framework/bxtest.h"

#include "framework/bxconditions.h"
#include "framework/bxhotlist.h"
#include "framework/bxtestloop.h"
#include "framework/bxtestrun.h"
#include "output/bxostream.h"
#include "parameters/bxinifile.h"
#include "parameters/bxistream.h"

bxTest::bxTest(bxString testName, bxString path, bxString text)
    : startTime(time(nullptr)), endTime(startTime), name(testName), fileName(path.getFileName()), info(text) {
}

// `initSettings` is called as the base's own: a derived test is not constructed yet.

bxTest::bxTest(bxFuncTool toolFunc, bxString testName, bxString path, bxString text)
    : bxTest(testName, path, text) {
    funcTool = toolFunc;
    bxTest::initSettings();
}

bxTest::bxTest(bxFuncLoop loopFunc, bxFuncStat statFunc, bxString testName, bxString path, bxString text)
    : bxTest(nullptr, nullptr, loopFunc, statFunc, testName, path, text) {}

bxTest::bxTest(bxFuncCall callFunc, bxFuncInit init, bxFuncLoop loopFunc, bxFuncStat statFunc,
               bxString testName, bxString path, bxString text)
    : bxTest(testName, path, text) {
    funcLoop = loopFunc;
    funcStat = statFunc;
    funcCall = callFunc;
    initFunc = init;
    bxTest::initSettings();
}

bxTest::~bxTest() {
    delete cacheIter;
}

void bxTest::initSettings() {
    m_currentResult = UNDEFINED;
    firstIteration = true;
    bad87Status = badSSXStatus = false;
    cacheIter = nullptr;
    cacheRetry = false;
    deprecated = false;
    parms.clear();
}

bool bxTest::tobeRun(bxConditions& conditions) {
    return conditions.tobeRun(this) && (m_hot != hotOnly || bxIsHotFunction(name));
}

int bxTest::compareFunc(const bxTest* other) const {
    return name.compare(other->name);
}

bool bxTest::canStart() {
    return true;
}
void bxTest::flushStart() {}
void bxTest::beginTest() {
    initSettings();
}
void bxTest::endTest() {}

void bxTest::raiseResult(bxResult r) {
    if (r > m_currentResult)
        m_currentResult = r;
}

void bxTest::reportError(const bxString& message, bxResult r) {
    g_ostrm << ERR << message << endMessage;
    raiseResult(r);
}

bool bxTest::setIniSection(bxString section) {
    bxIniFile* const ini = g_istrm.iniFile();
    if (m_pressing && ini && !ini->sectionExist(section))
        return false;
    if (ini && g_istrm.updateIni())
        ini->write(section);
    g_istrm.setIniSection(section);
    return true;
}

bxResult bxTest::run() {
    return bxTestRun(*this).run();
}

void bxTest::startAndStop() {
    bxTestRun(*this).registerOnly();
}

void bxTest::loopData() {
    bxTestLoop(*this).run();
}
