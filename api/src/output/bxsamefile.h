/** \file
 * Two names of one file.
 */
#ifndef BXSAMEFILE_H
#define BXSAMEFILE_H

#include "foundation/bxstring.h"

/**
 * Whether two paths lead to one file, by whatever names and links, or would once it is made. What is no
 * file (a terminal, a pipe, /dev/null) is never the same: it loses nothing.
 */
bool bxSameFile(const bxString& a, const bxString& b);

#endif
