/** \file
 * The report blocks of a run. Each is a list of ready-made texts that goes to the listing as a framed
 * block and to the tables as cells.
 */
#ifndef BXREPORTS_H
#define BXREPORTS_H

#include "foundation/bxstringlist.h"

#include <initializer_list>

class bxConditions;
class bxCStream;
class bxOStream;
class bxTest;
class bxTestList;

/** Title of a run: processor, system, libraries, start. Pairs of label and value. */
class bxReportTitle : public bxStringList {
  public:
    explicit bxReportTitle(const bxTestList& tests);
};

/** Title of a test: function, test, description, source. Triples of label, value and further text. */
class bxReportTestTitle : public bxStringList {
  public:
    explicit bxReportTestTitle(const bxTest* test);
};

/**
 * Result of a test: its framed line, and its row of the summary table behind the two cells that the
 * test title has written. Without a test: the heading of the summary table.
 */
class bxReportTestResult : public bxStringList {
  public:
    explicit bxReportTestResult(const bxTest* test);

    /** The cells of the row, joined by commas. */
    const bxString& row() const { return m_row; }

  private:
    bxString m_row;
};

/** Summary of a run: eleven pairs of label and value. */
class bxReportEnd : public bxStringList {
  public:
    explicit bxReportEnd(const bxTestList& tests);
};

/** Enumeration of tests or library functions. Where no library function is known, the tests are listed. */
class bxReportList : public bxStringList {
  public:
    enum Mode {
        missing = -1, /**< library functions that no test measures */
        tests = 0,
        functions = 1 /**< all library functions */
    };
    bxReportList(bxTestList& registry, bxConditions& conditions, int mode);

    /** Number of cells in a row. */
    int columns() const { return m_columns; }

  private:
    void listTests(bxTestList& registry, bxConditions& conditions);
    void listFunctions(const bxTestList& registry, const bxStringList& names, bool missingOnly);
    /** The registered library functions without those that only set up or free; false when none remains. */
    static bool createFuncList(bxStringList& names);

    void addRow(std::initializer_list<bxString> cells);

    int m_columns = 0;
};

bxOStream& operator<<(bxOStream& out, const bxReportTitle& report);
bxOStream& operator<<(bxOStream& out, const bxReportTestTitle& report);
bxOStream& operator<<(bxOStream& out, const bxReportTestResult& report);
bxOStream& operator<<(bxOStream& out, const bxReportEnd& report);
bxOStream& operator<<(bxOStream& out, const bxReportList& report);

bxCStream& operator<<(bxCStream& out, const bxReportTitle& report);
bxCStream& operator<<(bxCStream& out, const bxReportTestTitle& report);
bxCStream& operator<<(bxCStream& out, const bxReportTestResult& report);
bxCStream& operator<<(bxCStream& out, const bxReportEnd& report);
bxCStream& operator<<(bxCStream& out, const bxReportList& report);

#endif
