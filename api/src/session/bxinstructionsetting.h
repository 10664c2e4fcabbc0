/** \file
 * Settings of the counting of instructions.
 */
#ifndef BXINSTRUCTIONSETTING_H
#define BXINSTRUCTIONSETTING_H

/**
 * Reads "Instructions" (yes or no, default no) and "InstructionsMost" (steps after which the counting of a
 * call is given up, at least 1, default 200000) and "InstructionsFile" (takes what each counted call did,
 * `bxStepFile`), "InstructionsSteps" (no leaves the steps out of it), "InstructionsRow" (the only combination
 * of each test that is measured, from 1 on) into `g_tool`. Throws bxException for a wrong value.
 */
void bxReadInstructions();

#endif
