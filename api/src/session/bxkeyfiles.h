/** \file
 * The files that keys name.
 */
#ifndef BXKEYFILES_H
#define BXKEYFILES_H

#include "foundation/bxstring.h"

class bxCommandList;

/**
 * Two keys of a command line that name one file, of which the last to write would leave nothing to the
 * other. Keys of which only the last counts (-g, and -i with -I) count once.
 */
struct bxSharedFile {
    char first = 0; /**< 0: all files are different */
    char second = 0;
    bxString path;
};
/** The first such pair; the default directories must be settled. */
bxSharedFile bxFindSharedFile(const bxCommandList& keys);

#endif
