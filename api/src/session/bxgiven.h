/** \file
 * Parameters of the session that stand beside those of the dialogue: they come from -d keys and the ini file
 * only, nobody is asked for them, and one that is not given is not mentioned.
 */
#ifndef BXGIVEN_H
#define BXGIVEN_H

#include "output/bxstreams.h"
#include "parameters/bxistream.h"
#include "parameters/bxparameter.h"

#include <climits>

class bxTestList;

/** Reads a parameter and applies its value, if one is given. Throws bxException for a wrong value. */
template <class Parameter, class Apply>
void bxReadGiven(Parameter& parm, Apply apply) {
    if (!g_istrm.isGiven(parm.name()))
        return;
    parm.fromIStream(g_istrm);
    apply(parm.value());
}

/** Reads "yes" or "no" into a setting. */
void bxReadYesNo(const char* name, bool& setting);
/** Reads a whole number within limits into a setting. */
void bxReadNumber(const char* name, int& setting, int least, int most = INT_MAX);

/** Lists at ERR what was given and nothing in the run asked for; true when a -d name was unknown. */
bool bxReportUnused(const bxTestList& tests);

#endif
