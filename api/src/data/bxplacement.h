/** \file
 * Where blocks of test data stand: every rule of alignment, misalignment, shift and guard pages.
 */
#ifndef BXPLACEMENT_H
#define BXPLACEMENT_H

/** What the session asks for. */
struct bxPlacementRules {
    int vectorShift = 512;   /**< bytes added to the mutual offset after each block of a combination */
    int vectorAlign = 0;     /**< misalignment in bytes or elements, -63 to 63 */
    bool alignSrc = true;    /**< only the first block of a combination is misaligned */
    bool alignByByte = true; /**< the misalignment counts bytes, not elements */
    /**
     * Each new block ends at a page that must not be touched, so that a function that runs over the end of
     * its data faults there. The block then keeps its misalignment modulo 16 only, up to 15 bytes may lie
     * between its end and the page, and the mutual offset has no effect.
     */
    bool guard = false;
};

/**
 * Gives the blocks of one combination of parameter values their places, one after another. A combination
 * measured again with other displacements is the same data in other layouts.
 */
class bxPlacement {
  public:
    /**
     * Begins a combination. All its blocks stand `displacement` bytes further than in the layout that the
     * rules alone give, and each by `more` bytes further than that of the block before, modulo a page;
     * multiples of 64 leave their misalignment as it is.
     */
    void restart(int displacement = 0, int more = 0);

    /**
     * Allocates the next block. A negative alignment -u asks for the rules' misalignment in units of u bytes,
     * others are the misalignment in bytes. Null, after a message, when it cannot be had.
     */
    void* allocate(int size, int align, void* owner);

    /** The alignment to ask for when elements of this size take the rules' misalignment. */
    int ruledAlign(int elementSize) const { return rules.alignByByte ? -1 : -elementSize; }

    bxPlacementRules rules;
    int blocks = 0;   /**< allocated for the present combination */
    int shift = 0;    /**< mutual offset of the next block, bytes */
    int failures = 0; /**< blocks of the present combination that could not be had */

  private:
    int misalignment(int align) const;

    int m_displacement = 0;
    int m_more = 0;
};

/** The placement of the run. */
inline constinit bxPlacement g_placement;

/** \name The rules as the session sets them
 * @{ */
int bxGetVectorShift();
void bxSetVectorShift(int bytes);
int bxGetVectorAlign();
/** Keeps the distance modulo 64. */
void bxSetVectorAlign(int distance);
bool bxGetAlignSrc();
void bxSetAlignSrc(bool firstOnly);
bool bxGetAlignByByte();
void bxSetAlignByByte(bool byByte);
/** @} */

#endif
