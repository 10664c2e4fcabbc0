/** \file
 * The state of the machine around calls of a tested function.
 */
#ifndef BXCALLSCOPE_H
#define BXCALLSCOPE_H

/**
 * Between its construction and its end tested functions may be called: the x87 stack is empty, the control
 * words are kept for comparison (`g_callWatch`), and the time limit may end the calls. With `measured` also:
 * the x87 flags are cleared, the SSE flags are those that the functions left, the process has the measuring
 * priority; at the end the flags are collected (`g_ctrl87`, `g_ssx`). Nothing of it is inside what is timed.
 * After a jump out of the calls (bxsignal.h) the guard puts right what the end would have.
 */
class bxCallScope {
  public:
    enum Extent { called, measured };

    /** \param priority as `bxSetPriority` takes it \throw bxException when the time of the combination is
     * over */
    explicit bxCallScope(Extent extent, int priority = 0);
    ~bxCallScope();
    bxCallScope(const bxCallScope&) = delete;
    bxCallScope& operator=(const bxCallScope&) = delete;

  private:
    Extent m_extent;
};

#endif
