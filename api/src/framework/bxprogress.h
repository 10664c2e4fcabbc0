/** \file
 * The line that tells, on a terminal, how far a run is.
 */
#ifndef BXPROGRESS_H
#define BXPROGRESS_H

#include "foundation/bxstring.h"

#include <ctime>

/**
 * One line on standard error, written over and over while the tests run and removed at the end. It is there
 * only when standard error is a terminal and standard output is not; the listing never sees it.
 */
class bxProgress {
  public:
    bxProgress();
    ~bxProgress();
    bxProgress(const bxProgress&) = delete;
    bxProgress& operator=(const bxProgress&) = delete;

    /** Whether there is a line; otherwise the other functions do nothing. */
    bool shown() const { return m_shown; }
    void setSelected(int tests) { m_selected = tests; }
    /** Before a test: writes the line with the tested function's name. */
    void beforeTest(const bxString& function);
    void afterTest() { ++m_done; }
    /** Between measurements: writes the line anew when a second has passed. */
    void tick();

    /** The line: tests done and selected, function, seconds elapsed, and the rest at the present pace. */
    static bxString line(int done, int selected, const bxString& function, int elapsed);

  private:
    void write();

    bool m_shown;
    bxString m_function;
    time_t m_written = 0;
    int m_selected = 0;
    int m_done = 0;
    time_t m_start;
};

#endif
