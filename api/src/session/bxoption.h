/** \file
 * One registered key: what the session knows of it.
 */
#ifndef BXOPTION_H
#define BXOPTION_H

#include "foundation/bxstring.h"

class bxSession;

/** Describes in words what a key does with this argument, for the report of the command line. */
using bxKeyInfo = bxString (*)(bxString argument);
/** Carries the key out. */
using bxKeyApply = void (*)(bxString argument, bxSession* session);

struct bxOption {
    char key;
    bool hidden;   /**< left out of the help unless hidden keys are asked for */
    bxString help; /**< lines of the short help, each with its line end; empty: the key is deprecated */
    bxKeyInfo info;
    bxKeyApply apply;
    bxString descr; /**< extended description; may be empty */
};

#endif
