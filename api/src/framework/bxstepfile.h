/** \file
 * The file of the setting InstructionsFile: what each counted call did, for programs that explain it.
 */
#ifndef BXSTEPFILE_H
#define BXSTEPFILE_H

#include "timing/bxinstructions.h"
#include "timing/bxprecisefigure.h"
#include "timing/bxsteplog.h"

/** One counted call. */
struct bxStepRecord {
    bxString function;
    bxString parameters; /**< "Len=64 Type=2" */
    double operations;   /**< floating-point operations of a call that the test declares; 0 for none */
    const bxInstructionCount& count;
    const bxPreciseFigure& figure; /**< 0 clocks where it was not measured so */
    const bxStepLog* log;          /**< null where only the count is wanted */
};

/**
 * Writes calls into a file, one behind the other, each a text of lines "key value", "data BYTES" the last of
 * them, and behind it the log as it is (bxsteplog.h). Beside the registers there are the bytes of the
 * instructions ("code ADDRESS BYTES"), the files that they come from ("map BEGIN END OFFSET FILE") and the
 * blocks of test data ("block BEGIN SIZE OWNER"): nothing else is needed to tell what was executed on what.
 */
class bxStepFile {
  public:
    /** Begins a file of that name, if it is a new name; false when it cannot be written. */
    static bool open(const bxString& name);
    /** Adds a call to the open file. \return false when it could not be written */
    static bool add(const bxStepRecord& record);
};

#endif
