/** \file
 * The text of the comment column: how a figure was obtained.
 */
#ifndef BXCOMMENT_H
#define BXCOMMENT_H

class bxTool;
struct bxCallFigures;
struct bxInstructionCount;
struct bxLayoutSpread;

/**
 * Completes the engine's `info` (how often the function was called) by what the precise mode tells of its
 * figure, and by the instructions of a call, the cost of single calls and the spread over layouts
 * where asked for.
 */
void bxCompleteComment(bxTool& tool, const bxInstructionCount& instructions, const bxCallFigures& calls,
                       const bxLayoutSpread& layouts);

#endif
