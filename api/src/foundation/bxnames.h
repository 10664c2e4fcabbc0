/** \file
 * Names of the tested library's enumeration values, in the order of the values.
 */
#ifndef BXNAMES_H
#define BXNAMES_H

#include "foundation/bxstring.h"

/** Rounding modes. */
inline const bxString RndStr[] = {"zero", "near"};
/** Hints between speed and accuracy. */
inline const bxString HintStr[] = {"none", "fast", "accurate"};
/** Comparisons. */
inline const bxString CmpStr[] = {"LT", "LE", "EQ", "GE", "GT"};
/** Where a transform divides by its length. */
inline const bxString FlagStr[] = {"divFwdByN", "divInvByN", "divBySqrtN", "nodivByAny"};

#endif
