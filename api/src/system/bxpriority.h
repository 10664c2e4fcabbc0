/** \file
 * Priority of the process while a measurement runs. Without root rights nothing changes.
 */
#ifndef BXPRIORITY_H
#define BXPRIORITY_H

/** Priorities of the process. */
enum bxPriority { prioKeep, prioHigh, prioNormal, prioLow };

/** Saves the priority and sets another, a `bxPriority`; high is real time. */
void bxSetPriority(int mode);

/** Restores what the last `bxSetPriority` saved. */
void bxResetPriority();

#endif
