/** \file
 * Settings of the counting of instructions.
 */
#ifndef BXINSTRUCTIONSETTING_H
#define BXINSTRUCTIONSETTING_H

/**
 * Reads "Instructions" (yes or no, default no) and "InstructionsMost" (steps after which the counting of a
 * call is given up, at least 1, default 200000) into `g_tool`. Throws bxException for a wrong value.
 */
void bxReadInstructions();

#endif
