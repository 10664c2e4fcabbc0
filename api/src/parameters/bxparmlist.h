/** \file
 * Registration of the parameters that all tests share.
 */
#ifndef BXPARMLIST_H
#define BXPARMLIST_H

#include "foundation/bxlist.h"

class bxParameter;

/** The common parameters in registration order; null while none is registered. */
extern bxList<bxParameter*>* g_pParmList;
/** A function that the session calls before it selects the common parameters, or null. */
extern void (*s_parmFunc)();

/** Registers a common parameter during static initialisation; returns 1. */
int bxRegParm(bxParameter& parm);
/** Registers the function, in place of an earlier one; returns 1. */
int bxRegParmFunc(void (*function)());

#endif
