/** \file
 * Parameters whose values have names: a single one, and a list of them.
 */
#ifndef BXMAP_H
#define BXMAP_H

#include "parameters/bxenumiterator.h"

#include <algorithm>
#include <list>

/**
 * Values with their names. A value is read from its name or any beginning of it, in any case; the name itself
 * wins over a longer one, and then the first in table order.
 */
template <class T>
class bxNameTable {
  public:
    /** The name of a value; empty when it has none. */
    bxString nameOf(T value) const {
        const auto entry = std::ranges::find(m_entries, value, &Entry::value);
        return entry == m_entries.end() ? bxString() : entry->name;
    }
    bxReading<T> read(const bxString& text) const {
        for (const bool abbreviated : {false, true})
            for (const Entry& entry : m_entries)
                if ((abbreviated || text.length() == entry.name.length()) && fitString(text, entry.name, 0))
                    return {entry.value};
        return {T(), false};
    }
    /** All names, joined by "|". */
    bxString names() const {
        bxString text;
        for (const Entry& entry : m_entries)
            text << (&entry == &m_entries.front() ? "" : "|") << entry.name;
        return text;
    }
    /** The place of a value's name; a new value gets an empty one. */
    bxString& operator[](T value) {
        const auto entry = std::ranges::find(m_entries, value, &Entry::value);
        return entry == m_entries.end() ? m_entries.emplace_back(value, bxString()).name : entry->name;
    }
    void clear() { m_entries.clear(); }

  private:
    struct Entry {
        Entry(T v, const bxString& n) : value(v), name(n) {}
        T value;
        bxString name;
    };
    std::list<Entry> m_entries; // whose places stay where they are
};

/** A value list of named values. A declaration writes `iterator[value] = name` for each, then adds values. */
template <class T>
class bxMapIterator : public bxEnumIterator_NCS<T> {
  public:
    using bxEnumIterator_NCS<T>::bxEnumIterator_NCS;
    using bxEnumIterator_NCS<T>::addValidation;

    bxString valueToString(T value) const override { return m_names.nameOf(value); }
    T stringToValue(bxString& text) const override { return bxTell(text, m_names.read(text)); }

    /** Switches validation on with no allowed value: only named ones are. */
    void initValidation() override {
        this->m_allowed.clear();
        m_names.clear();
        this->m_validation = true;
    }
    void resetValidation() override {
        bxEnumIterator_NCS<T>::resetValidation();
        m_names.clear();
    }
    /** Allows a value, at first with an empty name. */
    bool addValidation(T value) override {
        if (!bxEnumIterator_NCS<T>::addValidation(value))
            return false;
        m_names[value];
        return true;
    }
    /** Empties the values and the names. */
    virtual void resetMap() {
        this->reset();
        resetValidation();
    }

    /** The name to be given to a new value; a value that has one keeps it (a scratch name is returned). */
    bxString& operator[](T value) { return addValidation(value) ? m_names[value] : m_scratch; }

  private:
    bxNameTable<T> m_names; // of the allowed values
    bxString m_scratch;
};

/** A single named value. */
template <class T>
class bxMapDefault : public bxDefault_NSC<T> {
  public:
    using bxDefault_NSC<T>::bxDefault_NSC;

    /** All names, joined by "|". */
    bxString validString() const override { return m_names.names(); }
    bxString valueToString(T value) const override { return m_names.nameOf(value); }
    T stringToValue(bxString& text) const override { return bxTell(text, m_names.read(text)); }

    /** The name of a value; a new value is entered with an empty name. */
    bxString& operator[](T value) { return m_names[value]; }

  private:
    bxNameTable<T> m_names;
};

extern template class bxMapIterator<int>;
extern template class bxMapDefault<int>;
extern template class bxMapDefault<bool>;

#endif
