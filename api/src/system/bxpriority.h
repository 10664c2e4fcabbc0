/** \file
 * Priority of the process while a measurement runs. Without root rights nothing changes.
 */
#ifndef BXPRIORITY_H
#define BXPRIORITY_H

/** Saves the priority and sets that of a mode: 0 leave alone, 1 high (real time), 2 normal, 3 low. */
void bxSetPriority(int mode);

/** Restores what the last `bxSetPriority` saved. */
void bxResetPriority();

#endif
