/** \file
 * Setting of the layouts.
 */
#ifndef BXLAYOUTSETTING_H
#define BXLAYOUTSETTING_H

/**
 * Reads "Layouts" (layouts of code, data and stack in which each combination is measured, 1 to 100; default
 * 1) into `g_run`. Throws bxException for a wrong value, and for more than 1 unless `batch`: the console has
 * answers for one process only.
 */
void bxReadLayouts(bool batch);

#endif
