/** \file
 * The refusal of a text that is no value of a parameter.
 */
#ifndef BXVALUEERROR_H
#define BXVALUEERROR_H

#include "timing/bxexception.h"

/** Says what was wrong with a text. Whoever knows where the text came from adds that (see `withDetails`). */
class bxValueError : public bxException {
  public:
    /** `showsText`: the message names the parameter and the text already. */
    explicit bxValueError(const bxString& what, bool showsText = false)
        : bxException(what), m_showsText(showsText) {}
    bool showsText() const { return m_showsText; }
    bxValueError withDetails(const bxString& details) const {
        return bxValueError(bxString(info()) + " (" + details + ")", m_showsText);
    }

  private:
    bool m_showsText;
};

#endif
