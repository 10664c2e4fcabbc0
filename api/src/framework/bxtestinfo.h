/** \file
 * The registration text of a test, split into its fields.
 */
#ifndef BXTESTINFO_H
#define BXTESTINFO_H

#include "foundation/bxstring.h"

/**
 * What a test says of itself at registration: "class/description/form", for example
 * "TimacAACTns//KV_REG". Missing fields are empty.
 */
class bxTestInfo {
  public:
    bxTestInfo() = default;
    explicit bxTestInfo(bxString text);

    bxString className; /**< test class: the test's own name, as -t selects it */
    bxString subName;   /**< description, empty for most tests */
    bxString regKind;   /**< registration form, the macro that was used */
};

#endif
