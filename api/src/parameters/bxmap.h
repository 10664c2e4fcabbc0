/** \file
 * Parameters whose values have names: a single one, and a list of them.
 */
#ifndef BXMAP_H
#define BXMAP_H

#include "parameters/bxenumiterator.h"

/**
 * A list of values and a parallel list of their names, as read and written by the named parameters. A value
 * is read from its name or any beginning of it, in any case; the name itself wins over a longer one, and then
 * the first in table order.
 */
namespace bxNames {

/** The name paired with the first entry equal to `value`; empty when there is none. */
template <class T>
bxString nameOf(const bxList<T>& values, const bxList<bxString>& names, T value) {
    auto name = names.begin();
    for (auto it = values.begin(); it != values.end() && name != names.end(); ++it, ++name)
        if (*it == value)
            return *name;
    return "";
}

/** The value of the name that is `text`, or of the first that begins with it; else the text's
 * conversion-failed flag and T(). */
template <class T>
T valueOf(const bxList<T>& values, const bxList<bxString>& names, bxString& text) {
    text.setFailed(false);
    for (const bool abbreviated : {false, true}) {
        auto name = names.begin();
        for (auto it = values.begin(); it != values.end() && name != names.end(); ++it, ++name)
            if ((abbreviated || text.length() == name->length()) && fitString(text, *name, 0))
                return *it;
    }
    text.setFailed(true);
    return T();
}

} // namespace bxNames

/** A value list of named values. A declaration writes `iterator[value] = name` for each, then adds values. */
template <class T>
class bxMapIterator : public bxEnumIterator_NCS<T> {
  public:
    using bxEnumIterator_NCS<T>::bxEnumIterator_NCS;
    using bxEnumIterator_NCS<T>::addValidation;

    bxString valueToString(T value) const override {
        return bxNames::nameOf(this->m_allowed, m_names, value);
    }
    T stringToValue(bxString& text) const override {
        return bxNames::valueOf(this->m_allowed, m_names, text);
    }

    /** Switches validation on with no allowed value: only named ones are. */
    void initValidation() override {
        this->m_allowed.erase(this->m_allowed.begin(), this->m_allowed.end());
        m_names.erase(m_names.begin(), m_names.end());
        this->m_validation = true;
    }
    void resetValidation() override {
        bxEnumIterator_NCS<T>::resetValidation();
        m_names.erase(m_names.begin(), m_names.end());
    }
    /** Allows a value, at first with an empty name. */
    bool addValidation(T value) override {
        if (!bxEnumIterator_NCS<T>::addValidation(value))
            return false;
        m_names.insert(m_names.end(), "");
        return true;
    }
    /** Empties the values and the names. */
    virtual void resetMap() {
        this->reset();
        resetValidation();
    }

    /** The name to be given to a new value; a value that has one keeps it (a scratch name is returned). */
    bxString& operator[](T value) {
        if (!addValidation(value))
            return m_scratch;
        auto last = m_names.end();
        return *--last;
    }

  private:
    bxList<bxString> m_names; // the n-th name belongs to the n-th allowed value
    bxString m_scratch;
};

/** A single named value. */
template <class T>
class bxMapDefault : public bxDefault_NSC<T> {
  public:
    using bxDefault_NSC<T>::bxDefault_NSC;

    /** All names, joined by "|". */
    bxString validString() const override {
        bxString text;
        for (auto it = m_names.begin(); it != m_names.end(); ++it) {
            if (it != m_names.begin())
                text += "|";
            text += *it;
        }
        return text;
    }
    bxString valueToString(T value) const override { return bxNames::nameOf(m_values, m_names, value); }
    T stringToValue(bxString& text) const override { return bxNames::valueOf(m_values, m_names, text); }

    /** The name of a value; a new value is entered with an empty name. */
    bxString& operator[](T value) {
        auto name = m_names.begin();
        for (auto it = m_values.begin(); it != m_values.end(); ++it, ++name)
            if (*it == value)
                return *name;
        m_values.insert(m_values.end(), value);
        return *m_names.insert(m_names.end(), "");
    }

  private:
    bxList<T> m_values;
    bxList<bxString> m_names; // the n-th name belongs to the n-th value
};

extern template class bxMapIterator<int>;
extern template class bxMapDefault<int>;
extern template class bxMapDefault<bool>;

#endif
