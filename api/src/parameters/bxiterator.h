/** \file
 * Parameters that run through a list of values.
 */
#ifndef BXITERATOR_H
#define BXITERATOR_H

#include "foundation/bxlist.h"
#include "foundation/bxstringlist.h"
#include "parameters/bxdefault.h"

/**
 * A parameter with a list of values (the `bxList<T>` base, in written order, repetitions kept). Its text form
 * is the values joined by "; ". The declared value is only the current value: the list starts empty.
 */
template <class T>
class bxIterator_NSC : public bxDefault_NSC<T>, public bxList<T> {
  public:
    using bxDefault_NSC<T>::bxDefault_NSC;

    /** Empties the value list. */
    void reset() override;
    /** Takes a list "v1; v2; ..."; the old list is kept when a word is no value. */
    void translate(bxString text) override;
    void resetIterator() override;
    bool nextValue() override;
    bxString defaultString() const override { return listDescr(*this, "; "); }

    /** Appends a value to the list. */
    virtual void add(T value) { this->insert(this->end(), value); }

    /** The texts of the values of `list`, joined by `separator`. */
    bxString listDescr(const bxList<T>& list, bxString separator) const;

  protected:
    bool m_started = false; // a value was asked for since the last reset

  private:
    typename bxList<T>::iterator m_next{}; // the element that follows the current one, once started
};

template <class T>
void bxIterator_NSC<T>::reset() {
    bxDefault_NSC<T>::reset();
    m_started = false;
    this->erase(this->begin(), this->end());
}

template <class T>
void bxIterator_NSC<T>::translate(bxString text) {
    bxStringList words;
    text.parse(words, ";");
    bxList<T> values;
    for (bxString word : words) {
        word.trim();
        if (!word.empty())
            values.insert(values.end(), this->validItem(word));
    }
    if (values.empty())
        this->refuseEmpty();
    this->swap(values);
    m_started = false;
}

template <class T>
void bxIterator_NSC<T>::resetIterator() {
    bxDefault_NSC<T>::resetIterator();
    m_started = false;
}

template <class T>
bool bxIterator_NSC<T>::nextValue() {
    if (!m_started) {
        m_started = true;
        m_next = this->begin();
        if (m_next == this->end())
            this->m_value = T();
    }
    if (m_next == this->end())
        return false;
    this->m_value = *m_next;
    ++m_next;
    return true;
}

template <class T>
bxString bxIterator_NSC<T>::listDescr(const bxList<T>& list, bxString separator) const {
    bxString text;
    bool first = true;
    for (const T& value : list) {
        if (!first)
            text += separator;
        first = false;
        text += this->valueToString(value);
    }
    return text;
}

/** A list of values with a plain text form, for example of integers. */
template <class T>
using bxIterator = bxWithTextForm<T, bxIterator_NSC<T>>;

extern template class bxIterator_NSC<int>;
extern template class bxWithTextForm<int, bxIterator_NSC<int>>;
extern template class bxIterator_NSC<ZoriSize>;
extern template class bxWithTextForm<ZoriSize, bxIterator_NSC<ZoriSize>>;

#endif
