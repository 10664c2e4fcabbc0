/** \file
 * Watch over the x87 and SSE control and status registers.
 *
 * Under the default settings an x87 division by zero traps: harness code must not divide by zero on the x87.
 */
#ifndef BXFPWATCH_H
#define BXFPWATCH_H

#include "foundation/bxstring.h"

/** \name Registers */
/** @{ */
/** x87 control word = (old & ~mask) | (value & mask); returns the old one. */
unsigned int bx_set_cw_fpu(unsigned int value, unsigned int mask);
/** x87 status word. */
unsigned int bx_get_sw_fpu();
/** Clears the x87 exception flags; returns the status word before. */
unsigned int bx_clear_fpu();
/** MXCSR = (old & ~mask) | (value & mask); returns the old one. */
unsigned int bx_set_ssx(unsigned int value, unsigned int mask);
/** MXCSR. */
unsigned int bx_get_ssx();
/** @} */

/** The x87 side: default settings and texts. */
class ts87Base {
  public:
    static int Exception; /**< masks: all but zero-divide */
    static int Precision; /**< 53 bits */
    static int Rounding;  /**< to nearest */

    /** Clears the flags and sets the default control word. */
    static void setDefault();
    /** Names of the status flags that are set, "Ok" when none; a bad flag begins with "?". */
    static bxString strSW(int sw);
    /** Rounding, precision and the masked exceptions of a control word. */
    static bxString strCW(int cw);
};

/** The SSE side: default settings and texts. Does nothing on a processor without SSE. */
class tsSSXBase {
  public:
    static int Exception; /**< masks: all */
    static int FlushZero; /**< on */
    static int Rounding;  /**< to nearest */

    /** Of the processor that the program runs on. */
    tsSSXBase();
    explicit tsSSXBase(bool hasSSX) : m_hasSSX(hasSSX) {}

    bool hasSSX() const { return m_hasSSX; }
    /** Sets the default MXCSR with its flags cleared; denormals-are-zero stays as it is. */
    void setDefault() const;
    /** Clears the exception flags. */
    void clearFlags() const;
    /** MXCSR, 0 without SSE. */
    int get() const;
    /** Names of the exception flags that are set, "Ok" when none; a bad flag begins with "?". */
    bxString strExceptionState(int mxcsr) const;
    /** Rounding, masked exceptions and flush-to-zero of an MXCSR. */
    bxString strCW(int mxcsr) const;

  private:
    bool m_hasSSX;
};

/** Collects the x87 words over the measurements of a parameter combination. */
class bx87 {
  public:
    /** Sets the default control word and forgets what was collected. */
    void init();
    /** Clears the flags and forgets what was collected. */
    void clear();
    /** Before a measurement: clears the flags. */
    void start();
    /** After a measurement: collects the status and the control word. */
    void stop();

    int getCW() const { return m_cw; }
    int getSW() const { return m_sw; }
    bxString strSW() const { return m_base.strSW(m_sw); }
    bxString strCW() const { return m_base.strCW(m_cw); }
    /** Whether a bad flag was collected. */
    bool badStatus() const;

  private:
    [[no_unique_address]] ts87Base m_base;
    int m_cw = 0;
    int m_sw = 0;
};

/** Collects MXCSR over the measurements of a parameter combination. */
class bxSSX {
  public:
    explicit bxSSX(tsSSXBase base = tsSSXBase()) : m_base(base) {}

    /** Sets the default MXCSR and forgets what was collected. */
    void init();
    /** Clears the flags and forgets what was collected. */
    void clear();
    /** Nothing: the SSE flags collect from `init` on. */
    void start() {}
    /** Puts back the flags collected so far: what the harness raised since is not the function's. */
    void resume() const;
    /** After a measurement: collects MXCSR. */
    void stop();

    int get() const { return m_mxcsr; }
    bxString strExceptionState() const { return m_base.strExceptionState(m_mxcsr); }
    bxString strCW() const { return m_base.strCW(m_mxcsr); }
    /** Whether a bad flag was collected. */
    bool badStatus() const;

  private:
    tsSSXBase m_base;
    int m_mxcsr = 0;
};

/** Access for the global below. */
bxSSX& bxSSXWatch();

/** The watch of the session, usable from any static initialiser. */
extern bx87 g_ctrl87;
inline bxSSX& g_ssx = bxSSXWatch();

/** Sets both control words to their defaults and forgets what was collected. */
void bxInitCtrlStatus();
/** Clears the flags of both and forgets what was collected. */
void bxClearCtrlStatus();
/** Whether bad flags were collected: on the x87, on SSE, on either. */
bool bxBadCtrlStatus(bool& bad87, bool& badSSX);
/** The same for a caller who only wants to know. */
bool bxBadCtrlStatus();
/** Writes the bad flags as warnings, of the sides asked for. */
void bxPrintCtrlStatus(bool bad87, bool badSSX);

/**
 * Puts the floating-point state right after a function was left in the middle: empty x87 stack (MMX state
 * with it), no pending exception, default control words, denormals-are-zero off.
 */
void bxResetFpState();

#endif
