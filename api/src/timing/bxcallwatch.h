/** \file
 * Watch over what a tested function has to leave as it was: the floating-point control words, an empty x87
 * stack, and the registers that belong to its caller.
 */
#ifndef BXCALLWATCH_H
#define BXCALLWATCH_H

#include "foundation/bxstring.h"
#include "timing/bxtool.h"

/**
 * Collects the findings of one combination of parameter values. Nothing of it is inside what is timed. What
 * was changed is put back, so that the harness and the next measurement work with what they had.
 */
class bxCallWatch {
  public:
    /** Before a combination: forgets what was found. */
    void init() { *this = bxCallWatch(); }
    /** Before a measurement: empties the x87 stack and keeps the control words. */
    void start();
    /** After a measurement, when its status flags have been collected: compares with what `start` kept. */
    void stop();
    /** Calls the function once and notes which registers of its caller it does not preserve. */
    int call(bxFuncCall function);
    /** Whether such a register was found: a compiled loop around the function would lose its own values. */
    bool clobbers() const { return m_registers != 0; }
    /** A function that calls the given one and puts the caller's registers back. One is kept at a time. */
    static bxFuncCall shield(bxFuncCall function);

    /** Whether anything was found. */
    bool bad() const { return m_changed87 || m_changedSSX || m_stackInUse != 0 || clobbers(); }
    /** Writes the findings as warnings. */
    void print() const;
    /** Names of the registers found, each followed by a blank. */
    bxString registerNames() const;

  private:
    static int callShielded();

    int m_start87 = 0;
    int m_startSSX = 0;
    int m_word87 = 0; /**< as the function left it first */
    int m_wordSSX = 0;
    bool m_changed87 = false;
    bool m_changedSSX = false;
    int m_stackInUse = 0;     /**< most x87 registers left in use */
    unsigned m_registers = 0; /**< bits of the registers not preserved */
};

/** The watch of the session. */
extern bxCallWatch g_callWatch;

#endif
