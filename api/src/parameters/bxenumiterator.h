/** \file
 * Parameters that run through values of which only some are allowed.
 */
#ifndef BXENUMITERATOR_H
#define BXENUMITERATOR_H

#include "parameters/bxiterator.h"

#include <algorithm>

/** A value list with a list of allowed values; any value is allowed until validation is switched on. */
template <class T>
class bxEnumIterator_NCS : public bxIterator_NSC<T> {
  public:
    using bxIterator_NSC<T>::bxIterator_NSC;

    /** Appends a value, which is then allowed too. */
    void add(T value) override;
    bxString validString() const override;

    /** Switches validation on; exactly the values now in the list are allowed. */
    virtual void initValidation();
    /** Switches validation off and forgets the allowed values. */
    virtual void resetValidation();
    /** Allows a value, switching validation on if it is off; false when it was allowed already. */
    virtual bool addValidation(T value);
    virtual void addValidation(const bxList<T>* values);

  protected:
    bool isAllowed(T value) const { return !m_validation || contains(value); }
    bool contains(T value) const;

    bxList<T> m_allowed;
    bool m_validation = false;
};

template <class T>
void bxEnumIterator_NCS<T>::add(T value) {
    bxIterator_NSC<T>::add(value);
    if (m_validation)
        addValidation(value);
}

template <class T>
bxString bxEnumIterator_NCS<T>::validString() const {
    return m_validation ? this->listDescr(m_allowed, "|") : bxString("");
}

template <class T>
void bxEnumIterator_NCS<T>::initValidation() {
    m_allowed.clear();
    m_validation = true;
    addValidation(this);
}

template <class T>
void bxEnumIterator_NCS<T>::resetValidation() {
    m_validation = false;
    m_allowed.clear();
}

template <class T>
bool bxEnumIterator_NCS<T>::addValidation(T value) {
    if (!m_validation)
        initValidation();
    if (contains(value))
        return false;
    m_allowed.insert(m_allowed.end(), value);
    return true;
}

template <class T>
void bxEnumIterator_NCS<T>::addValidation(const bxList<T>* values) {
    for (const T& value : *values)
        addValidation(value);
}

template <class T>
bool bxEnumIterator_NCS<T>::contains(T value) const {
    return std::find(m_allowed.begin(), m_allowed.end(), value) != m_allowed.end();
}

/** Integers of which only the allowed ones are read from text while validation is on. */
template <class T>
using bxEnumIterator = bxWithTextForm<T, bxEnumIterator_NCS<T>>;

extern template class bxEnumIterator_NCS<int>;
extern template class bxWithTextForm<int, bxEnumIterator_NCS<int>>;

#endif
