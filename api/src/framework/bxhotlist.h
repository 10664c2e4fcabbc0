/** \file
 * The list of hot functions: the few that a user wants to look at first.
 */
#ifndef BXHOTLIST_H
#define BXHOTLIST_H

#include "foundation/bxstringlist.h"

/** Full names of the hot functions; null until the first registration. */
extern bxStringList* g_pHotList;

/** Appends a function name to the hot list, creating the list on first use. Returns 1. */
int bxRegHotFunction(bxString name);

/** Whether the name stands in the hot list, letter by letter. */
bool bxIsHotFunction(const bxString& name);

#endif
