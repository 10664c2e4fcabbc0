/** \file
 * A setting that is "yes" or "no".
 */
#ifndef BXYESNO_H
#define BXYESNO_H

#include "parameters/bxmap.h"

class bxYesNo : public bxMapDefault<bool> {
  public:
    bxYesNo(bool value, const char* name) : bxMapDefault<bool>(value, name, "") {
        (*this)[true] = "yes";
        (*this)[false] = "no";
    }
};

#endif
