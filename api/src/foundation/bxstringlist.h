/** \file
 * A list of texts.
 */
#ifndef BXSTRINGLIST_H
#define BXSTRINGLIST_H

#include "foundation/bxlist.h"
#include "foundation/bxstring.h"

/** A list of texts. */
class bxStringList : public bxList<bxString> {};

#endif
