/** \file
 * What a unit announces to the session before main starts. Every hook stores its argument and returns 1, so
 * that it can initialise a static variable; no order among units is needed.
 */
#ifndef BXREGISTER_H
#define BXREGISTER_H

#include "foundation/bxstring.h"

class bxSession;
class bxTool;

/** The session to run in place of the default one; null: the default. */
extern bxSession* pSession;
/** Keys that hold when the user gives none; null until the first registration. */
extern bxString* pCmdLine;
/** Sets method and numbers that the timing questions offer as defaults; null: Auto. */
extern void (*initTimingMethod)(bxTool&);
/** The keys -q and -Q exist. */
extern bool qKeys;

int bxRegSession(bxSession* session);
/** Appends a blank and the text to the forced command line. */
int bxRegCmdLine(bxString text);
int bxRegTimingMethod(void (*initialiser)(bxTool&));
int bxRegQKeys();

#endif
