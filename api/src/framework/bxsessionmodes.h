/** \file
 * Session-wide switches that tests read.
 */
#ifndef BXSESSIONMODES_H
#define BXSESSIONMODES_H

/** The switches stand below the session, which derives from them: tests know no session. */
class bxSessionModes {
  public:
    /** Bits of `m_nameMode`. */
    enum NameMode {
        nameInResults = 1, /**< parameter-name lines go into the result tables */
        nameInOwnTable = 2 /**< parameter-name lines go into the separate name table */
    };
    static int& m_nameMode;
    /** Tests write their parameter names and measure nothing. */
    static bool& m_nameExit;
};

#endif
