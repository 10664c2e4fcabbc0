/** \file
 * Session-wide switches that tests read.
 */
#ifndef BXSESSIONMODES_H
#define BXSESSIONMODES_H

#include "framework/bxrun.h"

/** The switches stand below the session, which derives from them: tests know no session. */
class bxSessionModes {
  public:
    /** Bits of `m_nameMode`. */
    enum NameMode {
        nameInResults = 1, /**< parameter-name lines go into the result tables */
        nameInOwnTable = 2 /**< parameter-name lines go into the separate name table */
    };
    static inline int& m_nameMode = g_run.nameMode;
    /** Tests write their parameter names and measure nothing. */
    static inline bool& m_nameExit = g_run.nameExit;
};

#endif
