/** \file
 * The known name that a mistyped one may have meant.
 */
#ifndef BXNEAREST_H
#define BXNEAREST_H

#include "foundation/bxstringlist.h"

/**
 * The name with the fewest letters inserted, left out or changed, whatever their case; the first of several.
 * Empty when more than a third of the letters differ in all of them.
 */
bxString bxNearestName(const bxString& word, const bxStringList& names);

#endif
