/** \file
 * A setting that is a whole number within limits.
 */
#ifndef BXWHOLENUMBER_H
#define BXWHOLENUMBER_H

#include "parameters/bxdefault.h"

#include <climits>

class bxWholeNumber : public bxDefault<int> {
  public:
    bxWholeNumber(int value, const char* name, int least, int most = INT_MAX)
        : bxDefault<int>(value, name, ""), m_least(least), m_most(most) {}
    int stringToValue(bxString& text) const override {
        const int value = bxDefault<int>::stringToValue(text);
        if (value < m_least || value > m_most)
            text.setFailed(true);
        return value;
    }

  protected:
    bxString allowedText() const override {
        const bxString from = bxString("whole numbers from ") << m_least;
        return m_most == INT_MAX ? from + " on" : from + " to " << m_most;
    }

  private:
    int m_least, m_most;
};

#endif
