/** \file
 * A parameter that runs through a stepped range of integers.
 */
#ifndef BXSTEPITERATOR_H
#define BXSTEPITERATOR_H

#include "parameters/bxiterator.h"

/** How a range goes from one value to the next; the values are the characters of the text form. */
enum StepOprtn {
    stepAdd = '+',
    stepSubtract = '-',
    stepMultiply = '*',
    stepList = '?' /**< no range: the iterator runs through its value list */
};

/**
 * A range "first last +step", "-step" or "*step" (separated by blanks or ";"), or any value list. The last
 * value is produced only when the sequence meets it. Ranges that never reach their end are refused with the
 * bxException "Conflict between iterator limits and operation". Only `bxStepIterator<int>` exists.
 */
template <class T>
class bxStepIterator : public bxIterator<T> {
  public:
    using bxIterator<T>::bxIterator;

    void translate(bxString text) override;
    bool nextValue() override;
    bxString defaultString() const override;
    /** In range mode "for (Len = 16; Len <= 1024; Len *= 2)". */
    bxString description() const override;
    bxString prompt() const override;

    /** Sets a range from code, for example (16, 1024, '*', 2); throws as `validate` does. */
    void setRange(T first, T last, char op, T step);
    /** Takes a range text; false when the text has not the form of a range (it may be a list). */
    bool translateStep(bxString text);
    /** Checks a range and finds its direction; throws bxException when limits, operation and step conflict.
     */
    void validate(T first, T last, T& step, StepOprtn& op, bool& descending) const;

    bool isRange() const { return m_op != stepList; }

  protected:
    bool takesRanges() const override { return true; }

  private:
    bool beyondLast() const;
    void advance();

    T m_first = 0;
    T m_last = 0;
    T m_step = 0;
    StepOprtn m_op = stepList;
    bool m_descending = false;
    // The place in the sequence is kept apart from the current value, which setValue may have changed.
    long long m_position = 0;
};

extern template class bxStepIterator<int>;

#endif
