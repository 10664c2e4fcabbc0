/** \file
 * One run of the program, from the words of the command line to the signal file.
 */
#ifndef BXSESSION_H
#define BXSESSION_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"
#include "framework/bxconditions.h"
#include "framework/bxsessionmodes.h"
#include "output/bxiostream.h"
#include "output/bxlevels.h"
#include "output/bxpaths.h"
#include "session/bxcommand.h"
#include "session/bxkeyfiles.h"
#include "session/bxoption.h"

#include <memory>

/** Version number in the banner. */
extern const char* const BX_version;

/** The session. One exists per process; a unit may register one of its own class and replace any step. */
class bxSession : public bxPaths, public bxSessionModes {
  public:
    bxSession();
    virtual ~bxSession();
    bxSession(const bxSession&) = delete;
    bxSession& operator=(const bxSession&) = delete;

  protected:
    /** Initial settings and the registered keys. */
    virtual void initSession();

  public:
    /**
     * One complete run; the exit status: 1 when a test ended in a failure or the run was interrupted, else
     * 0. With the setting Strict it is 2 when the run ended before its tests, no test ran, a key or a -d name
     * was not known, or an output could not be written.
     */
    virtual int run(int argc, char** argv);

  protected:
    // Head lines of the tables.
    virtual void funcTitleToCStream();
    virtual void parmsTitleToCStream();
    virtual void resultTitleToCStream();
    /** The heads of the result table and, where name lines are wanted in a table of their own, of that table.
     */
    virtual void putTableTitle();
    /** One head line into the result table; fixes the number of parameter and result columns. */
    virtual void putTableTitleLine();

    /** For derived sessions; false ends the run before anything is measured. */
    virtual bool startSession();
    /** Settles what depends on several keys. */
    virtual void updateOptions();
    /** Reads and applies the keys; false after a fatal error. */
    virtual bool parseCommandLine(int argc, char** argv);

    /** What -e enumerates, as bxReportList has it. */
    virtual void listTests(int mode);

    /** Help by the character behind -h or -?, or `hintShort`. */
    virtual void hint(char what, bool hide);
    virtual void hint_quick(bool hide);
    virtual void hint_full(bool hide);
    virtual void hint_descr(char key);

    virtual void outputHeader();
    virtual void outputFooter();

  public:
    /** Writes the signal file when one was asked for. */
    virtual void outputSignal();

  protected:
    /** Timing method, common parameters and data alignment. May throw bxException for a wrong value. */
    virtual void readCommonData();

  public:
    /** Keys that end the run early; values of `m_exitLevel`. */
    enum ExitLevel { exitNone, exitEnumerate, exitHelp, exitVersion };
    /** True when a key is present that ends the run early, of this level or above. */
    static bool isExit(int level);
    /** What the report says of a key that has no effect because of such a key. */
    static bxString getExitInfo();
    /** The text, or why it does not hold when isExit(level). */
    static bxString unlessExit(int level, bxString text);
    /** Three lines of 79 characters: the title in a box of stars. */
    static bxString getEnterTitle(bxString title);

    void addAskMode(int mode) { m_askMode |= mode; }
    void setBatchMode(bool on) { m_batchMode = on; }
    void setQuickMode(bool on) { m_quickMode = on; }
    void setEnumMode(int mode) { m_enumMode = mode; }
    void addLevelMode(OutputLevel level);
    void setIniMode(bxString path, bool write);
    /** Appends a condition, which the session then owns. */
    void addCondition(RunCondition* condition);
    void unopenedFile() { m_unopenedFile = true; }
    /** Attaches one more file to a stream; one that cannot be opened marks the session. */
    void openOutput(bxOutputs& stream, const bxString& path, bool append);
    void setSglName(bxString name);

    bool batchMode() const { return m_batchMode; }

    void initOption(char key, bxString help, bxKeyInfo info, bxKeyApply apply, bxString descr, bool hidden);
    /** The first registered key of this character, or null. */
    bxOption* getOption(char key);
    /** Reports one key and carries it out. */
    void applyOption(char key, bxString argument);

    static int m_exitLevel; /**< an `ExitLevel` */

  protected:
    // Steps of a run.
    /** Everything from the library settings to the last test; returns the exit status. */
    int measure();
    void attachConsole();
    void applyLibrarySettings();
    /** How many figures of the Auto method are of calls too short for it, if any are. */
    static void tellShortFigures();
    void sortTests();
    /** Writes the banner, the help or the enumeration; true when the run ends there. */
    bool quickOutput();
    void selectTestParameters();
    void beginCommonData();
    void endCommonData();
    /** The exit status of a run whose tests gave `status`. */
    int exitStatus(int status) const;
    /** All common settings; false when a wrong value ended them. */
    bool settleCommonData();

    // Steps of the command line.
    void resetOptions();
    /** The keys of the first source that has any, which the report names. */
    bxCommandList readCommandKeys(int argc, char** argv);
    void settleExitLevel(const bxCommandList& keys);
    void settlePaths(const bxCommandList& keys);
    /** First line of the program's ".cfg" file and the path under which it was found. */
    bool readCfgFile(bxString& args, bxString& path);
    bool openIniFile();
    /** After two keys that name one file: says so, and writes no file that one of them names. */
    void refuseSharedFile();
    /** So that a watching script does not take the end of an earlier run for that of this one. */
    void removeOldSignal();
    /** Ends the report with an error that ends the run. */
    bool fatalError(const char* text);

    /** Names every output that did not take all that was written to it, as on a full disk. */
    void reportWriteFailures();
    void reportUnwritten(const bxString& path);

    // Questions of the common settings; each returns whether its group was open to the console.
    int readTimingMethod();
    int readTestParameters();
    int readDataOffset();

    std::unique_ptr<bxConditions> m_conditions = std::make_unique<bxConditions>();
    bxList<bxOption*> m_options;
    int m_askMode = 0;
    bool m_batchMode = false;
    OutputLevel m_levelMode = outErr;
    bool m_quickMode = false;
    static constexpr int noEnumeration = 100;
    int m_enumMode = noEnumeration; /**< or a mode of bxReportList */
    bool m_unopenedFile = false;
    bxString m_iniName;
    bool m_iniWrite = false;
    bxString m_optionsText;
    bxString m_sglName;
    bool m_headerWritten = false;
    bool m_faulty = false; /**< of what Strict lets the exit status tell, something has happened */

  private:
    /** An output file named by a key; the stream that it is attached to owns it. */
    struct OutputFile {
        bxString path;
        const o_stream* file = nullptr;
    };
    bxList<OutputFile> m_outputFiles;
    bxSharedFile m_shared;
};

#endif
