/** \file
 * What the user gave and no parameter took.
 */
#ifndef BXUNUSED_H
#define BXUNUSED_H

#include "foundation/bxstringlist.h"

class bxIStream;

/** What was not used. */
struct bxUnused {
    bxStringList lines;
    bool unknownData = false; /**< the name of a -d key was unknown */
};

/**
 * Gives a line for each -d key, each key of an ini section that was read, and each section of the ini file
 * that nothing asked for, with the nearest known name where there is one. `sections`: those that a run may
 * read; one of them that was not read, as that of a test that was not selected, is not listed.
 */
bxUnused bxFindUnused(bxIStream& in, const bxStringList& sections);

#endif
