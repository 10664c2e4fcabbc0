/** \file
 * Functions that break what a function of a library has to keep: one for each protection that the harness
 * claims. Most are assembly, so that no compiler and no sanitizer takes part.
 */
#ifndef MISBEHAVIOURS_H
#define MISBEHAVIOURS_H

extern "C" {

/** \name Faults
 * @{ */
int zorsNullStore();
int zorsWildRead();
int zorsJumpToNowhere();
int zorsIllegalInstruction();
int zorsDivideInteger();
int zorsDivide87();
int zorsOverflowStack();
/** Stores one byte behind a block of data. */
int zorsWritePastEnd(char* end);
/** Frees a block of the heap whose header it has overwritten: the heap aborts the process. */
int zorsCorruptHeap();
int zorsThrow();
int zorsThrowNumber();
int zorsExit();
int zorsExitAtOnce();
int zorsLoopForever();
/** @} */

/** \name Changed state
 * @{ */
int zorsRound87();          /**< x87: towards zero, 64 bits, all masked */
int zorsRoundSSX();         /**< SSE: towards zero */
int zorsDenormalSSX();      /**< SSE: no flush-to-zero */
int zorsDenormalInputSSX(); /**< SSE: denormals are zero */
int zorsUnmaskSSX();        /**< SSE: invalid and zero-divide trap */
int zorsLeaveStack87();
int zorsLeaveMMX();
int zorsRaise87();  /**< x87: invalid */
int zorsRaiseSSX(); /**< SSE: invalid */
int zorsSetDirection();
/** @} */

/** \name Registers of the caller, one each but for the last
 * @{ */
int zorsClobberBX();
int zorsClobberBP();
#if defined(__x86_64__)
int zorsClobberR12();
int zorsClobberR13();
int zorsClobberR14();
int zorsClobberR15();
#else
int zorsClobberSI();
int zorsClobberDI();
#endif
int zorsClobberTwo();
/** @} */

/** Writes a line to standard output, which a function may do. */
int zorsPrint();
}

#endif
