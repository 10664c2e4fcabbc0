// The views of the present run, and of the placement of data, under the names that test units and programs
// use.
#include "framework/bxrun.h"

#include "data/bxplacement.h"
#include "framework/bxsessionmodes.h"
#include "framework/bxtest.h"
#include "framework/bxtestlist.h"

bxResult& bxTest::m_currentResult = g_run.result;
int& bxTest::m_numParmsColm = g_run.parameterColumns;
int& bxTest::m_numResultColm = g_run.resultColumns;
int& bxTest::m_hot = g_run.hot;
bool& bxTest::m_pressing = g_run.pressing;
bool& bxTest::m_cache = g_run.cache;
int& bxTest::m_vectorNum = g_placement.blocks;
int& bxTest::m_vectorShift = g_placement.shift;

bxString& bxTestList::m_startFunc = g_run.startFunc;
bxTest*& bxTestList::m_pCurrentTest = g_run.currentTest;

int& bxSessionModes::m_nameMode = g_run.nameMode;
bool& bxSessionModes::m_nameExit = g_run.nameExit;
