/** \file
 * Figures as text.
 */
#ifndef BXFIGURETEXT_H
#define BXFIGURETEXT_H

#include "timing/bxtiming.h"

/** An accuracy in per cent, with two places below 0.1 %. */
bxString bxAccuracyText(double accuracy);

/** The accuracy that was reached, "?" where nothing is known of it. */
bxString bxReachedText(const bxTimingFigures& figures);

/** Clocks in decimal, with zeros for the digits beyond 31 bits. */
bxString bxClocksText(long long clocks);

#endif
