#include "session/bxdialogue.h"

#include "data/bxplacement.h"
#include "framework/bxregister.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "parameters/bxmap.h"
#include "parameters/bxparmlist.h"
#include "session/bxsession.h"
#include "timing/bxtool.h"

namespace {

/** What one method or another asks for. */
constexpr const char* methodSettings[] = {"NumLoops",      "NumCalls",     "TotalCpuClocks",
                                          "StartNumLoops", "StopNumLoops", "Accuracy"};

/** Lets a parameter find its value, and gives it. */
template <class Parameter>
auto readValue(Parameter& parm) {
    parm.fromIStream(g_istrm);
    return parm.value();
}

int readInt(const char* name, int deflt) {
    bxDefault<int> parm(deflt, name, "");
    return readValue(parm);
}

bool readBool(const char* name, bool deflt, const char* trueName, const char* falseName) {
    bxMapDefault<bool> parm(deflt, name, "");
    parm[true] = trueName;
    parm[false] = falseName;
    return readValue(parm);
}

void writeBox(const bxString& title) {
    g_ostrm << ERR << bxSession::getEnterTitle(title) << endMessage;
}

/** Opens a group of settings to the console, under a title, or closes the console to it; returns `open`. */
bool openGroup(bool open, const char* title) {
    g_istrm.setIStream(open ? &c_in : nullptr);
    if (open)
        writeBox(title);
    return open;
}

/** The timing setup that a unit has registered, which gives the defaults. */
bxTool registeredSetup() {
    bxTool setup;
    setup.setMethodAuto();
    if (initTimingMethod)
        initTimingMethod(setup);
    return setup;
}

int readMethod(const bxTool& setup) {
    bxMapDefault<int> parm(setup.method, "Method", "");
    parm[bxTool::methodAuto] = "Auto";
    parm[bxTool::methodLoop] = "Manual";
    parm[bxTool::methodStat] = "Statistic";
    parm[bxTool::methodIterative] = "Iterative";
    return readValue(parm);
}

void readManual(const bxTool& setup) {
    int loops = 10;
    setup.getMethodLoop(loops);
    g_tool.setMethodLoop(readInt("NumLoops", loops));
}

void readStatistic(const bxTool& setup) {
    int calls = 3;
    long long clocks = 10000;
    setup.getMethodStat(calls, clocks);
    calls = readInt("NumCalls", calls);
    const int total = readInt("TotalCpuClocks", static_cast<int>(clocks));
    g_tool.setMethodStat(calls, total);
}

void readIterative(const bxTool& setup) {
    int start = 0;
    int stop = 0;
    long long clocks = 0;
    bxTool::getAutoParameters(start, stop, clocks);
    setup.getMethodBest(start, stop, clocks);
    start = readInt("StartNumLoops", start);
    stop = readInt("StopNumLoops", stop);
    g_tool.setMethodBest(start, stop, clocks);
}

} // namespace

int DefaultAlign::validItem(bxString text) {
    return bxDefault<int>::validItem(text) % 64;
}

int DefaultShift::validItem(bxString text) {
    return bxDefault<int>::validItem(text) & ~63;
}

void readAccuracy(int method) {
    constexpr double finest = 0.01;
    constexpr double coarsest = 0.5;
    constexpr double anyAccuracy = 500.0; // every measurement is within it
    if (method != bxTool::methodAuto && method != bxTool::methodIterative)
        return;
    bxDefault<int> percent(5, "Accuracy", "Accuracy, %");
    const double fraction = readValue(percent) * 0.01;
    g_tool.accuracy = fraction < finest || fraction > coarsest ? anyAccuracy : fraction;
}

bxString bxSession::getEnterTitle(bxString title) {
    constexpr int width = 78; // columns between the first blank and the last star
    const auto blanks = [](int n) {
        bxString text;
        text.resize(n > 0 ? n : 0, ' ');
        return text;
    };
    bxString stars;
    stars.resize(width, '*');
    const bxString edge = bxString(" ") + stars + "\n";
    const int start = (width + 2 - title.length()) >> 1; // rounds down, below zero too
    const int end = start + title.length();
    return edge + " *" + blanks(start - 2) + title + blanks(width - end) + "*\n" + edge;
}

int bxSession::readTimingMethod() {
    for (const char* name : methodSettings)
        g_istrm.expect(name);
    const bxTool setup = registeredSetup();
    const bool open = openGroup(m_askMode & askTiming, "Specify timing method, please");
    const int method = readMethod(setup);
    switch (method) {
    case bxTool::methodLoop:
        readManual(setup);
        break;
    case bxTool::methodStat:
        readStatistic(setup);
        break;
    case bxTool::methodIterative:
        readIterative(setup);
        break;
    default:
        g_tool.setMethodAuto();
    }
    readAccuracy(method);
    return open;
}

int bxSession::readTestParameters() {
    if (!g_pParmList || g_pParmList->empty())
        return 0;
    const bool open = openGroup(m_askMode & askParameters, "Specify common test parameters, please");
    for (bxParameter* parm : *g_pParmList) {
        parm->fromIStream(g_istrm);
        parm->setNeedsInput(false);
    }
    return open;
}

int bxSession::readDataOffset() {
    g_istrm.expect("MisalignFirstVectorOnly");
    const bool open = openGroup(m_askMode & askAlignment, "Specify vectors alignment, please");
    const bool byByte = readBool("AlignVectorsBy", false, "byte", "element");
    bxSetAlignByByte(byByte);
    DefaultAlign align(0, "VectorAlign",
                       byByte ? "VectorAlign by Byte, 0..63" : "VectorAlign by Element, 0..63");
    bxSetVectorAlign(readValue(align));
    if (align.value() != 0)
        bxSetAlignSrc(readBool("MisalignFirstVectorOnly", true, "yes", "no"));
    DefaultShift shift(512, "MutualVectorShift", "MutualVectorShift in Bytes, divisible by 64");
    bxSetVectorShift(readValue(shift));
    return open;
}
