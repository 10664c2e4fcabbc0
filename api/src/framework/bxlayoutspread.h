/** \file
 * How far a figure depends on where code, data and stack came to lie.
 */
#ifndef BXLAYOUTSPREAD_H
#define BXLAYOUTSPREAD_H

#include "foundation/bxstring.h"

#include <vector>

/** The figures of one combination in several layouts. */
struct bxLayoutSpread {
    int asked = 1;              /**< layouts */
    std::vector<double> clocks; /**< of a call, in the layouts that gave a figure */
    bool codeMoved = false;     /**< between the layouts, by address space randomisation */

    /**
     * For the comment column: "layouts=5 between=98.2..127 middle=101 spread=28.5%" (the distance of least
     * and most, relative to the median), with "layouts=3/5" where only three of five gave a figure, and
     * "code=fixed" where the code lay at the same addresses in all. Empty for one layout.
     */
    bxString text() const;
};

#endif
