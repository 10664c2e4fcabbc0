/** \file
 * exit() called by a tested function: one test is lost, not the run.
 *
 * The program defines exit, _exit, _Exit and quick_exit itself, so that calls from libraries arrive here.
 * While a guard is armed they are a fault of the test; otherwise, and in a child process, they do what they
 * always do. Nothing that was registered with atexit has run by then. A call that does not go through these
 * symbols (a library linked with its own copy of them, the bare system call) ends the process.
 */
#ifndef BXEXIT_H
#define BXEXIT_H

/** Finds the system's own functions behind these; for the fault handler, once. */
void bxCatchExit();
/** Makes the present process the one whose exit is caught; for a guard that arms. */
void bxCatchExitOfThisProcess();

#endif
