/** \file
 * Single-valued parameters.
 */
#ifndef BXDEFAULT_H
#define BXDEFAULT_H

#include "parameters/bxparameter.h"
#include "parameters/bxtextform.h"

#include <utility>
#include <vector>

/** A parameter with a value of type T (int, bool, an enumeration, a size) but no text form of its own. */
template <class T>
class bxDefault_NSC : public bxParameter {
  public:
    bxDefault_NSC(T value, bxString name, bxString prompt) : bxParameter(name, prompt), m_value(value) {}

    void reset() override {
        bxParameter::reset();
        m_value = T();
    }
    bxString valueString() const override { return valueToString(value()); }
    bool isDeprecatedParm() const override { return !m_deprecated.empty(); }
    /** Values are compared by their text. */
    bool setDeprecatedFlag(bool on) override;
    void translate(bxString text) override { m_value = validItem(text); }

    /** The current value. */
    virtual T value() const { return m_value; }
    virtual bxString valueToString(T) const { return ""; }
    /** Reads a value; sets the text's conversion-failed flag when it is none. */
    virtual T stringToValue(bxString&) const { return T(); }
    /** False when a value that `stringToValue` reads is only in the beginning of the text. */
    virtual bool readsWhole(const bxString&) const { return true; }
    /** What a text is: a value or none. Ends the way of the text's flag, which only `stringToValue` has. */
    bxReading<T> read(bxString text) const {
        const T value = stringToValue(text);
        return {value, !text.failed(), readsWhole(text)};
    }
    /** Reads a value; see `refuse` for a text that is none. */
    virtual T validItem(bxString text);

    /** Sets the current value only: a sequence of values that is under way goes on from its own position. */
    void setValue(T value) { m_value = value; }
    /** Marks `value` as deprecated; `text` stands in the table instead of it. */
    void addDeprecated(T value, bxString text) { m_deprecated.emplace_back(value, text); }

  protected:
    /** What may be read from text. */
    bool isAllowed(T) const { return true; }

    T m_value;

  private:
    std::vector<std::pair<T, bxString>> m_deprecated; // values with their texts
};

template <class T>
bool bxDefault_NSC<T>::setDeprecatedFlag(bool on) {
    if (on) {
        const bxString current = valueToString(value());
        for (const auto& [deprecated, text] : m_deprecated) {
            if (valueToString(deprecated) == current) {
                setDeprecated(true, text);
                return true;
            }
        }
    }
    setDeprecated(false, "");
    return false;
}

template <class T>
T bxDefault_NSC<T>::validItem(bxString text) {
    const bxReading<T> reading = read(text);
    if (!reading.good)
        refuse(text);
    noteReading(reading.whole);
    return reading.value;
}

/** A single value with a plain text form: `bxDefault<int>` reads and writes decimal integers. */
template <class T>
using bxDefault = bxWithTextForm<T, bxDefault_NSC<T>>;

extern template class bxDefault_NSC<int>;
extern template class bxDefault_NSC<bool>;
extern template class bxWithTextForm<int, bxDefault_NSC<int>>;

#endif
