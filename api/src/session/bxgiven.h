/** \file
 * Parameters of the session that stand beside those of the dialogue: they come from -d keys and the ini file
 * only, nobody is asked for them, and one that is not given is not mentioned.
 */
#ifndef BXGIVEN_H
#define BXGIVEN_H

#include "output/bxstreams.h"
#include "parameters/bxistream.h"
#include "parameters/bxparameter.h"

/** Whether a -d key or the ini file has a value for a name. */
bool bxIsGiven(const bxString& name);

/** Reads a parameter and applies its value, if one is given. Throws bxException for a wrong value. */
template <class Parameter, class Apply>
void bxReadGiven(Parameter& parm, Apply apply) {
    if (!bxIsGiven(parm.name()))
        return;
    parm.fromIStream(g_istrm);
    apply(parm.value());
}

#endif
