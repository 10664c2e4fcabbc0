/** \file
 * benchex-compare --pair.
 */
#ifndef PAIR_PAIRMAIN_H
#define PAIR_PAIRMAIN_H

/** Whether the command line asks for a comparison of two sides that run now. */
bool asksForPair(int argc, const char* const* argv);
/** The whole of it; the exit status. */
int runPair(int argc, char** argv);

#endif
