/** \file
 * A process beside another one that writes for both.
 */
#ifndef BXDISCARD_H
#define BXDISCARD_H

/** While true, no file is written, emptied or removed; what would be written goes nowhere. */
inline constinit bool g_discardOutput = false;

#endif
