/** \file
 * Single-valued parameters.
 */
#ifndef BXDEFAULT_H
#define BXDEFAULT_H

#include "foundation/bxlist.h"
#include "parameters/bxparameter.h"
#include "parameters/bxtextform.h"
#include "parameters/bxvalueerror.h"

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
    bool isDeprecatedParm() const override { return m_deprecatedValues.begin() != m_deprecatedValues.end(); }
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
    /** Reads a value; throws bxValueError "Invalid value of NAME = TEXT" when it is none. */
    virtual T validItem(bxString text);

    /** Sets the current value only: a sequence of values that is under way goes on from its own position. */
    void setValue(T value) { m_value = value; }
    /** Marks `value` as deprecated; `text` stands in the table instead of it. */
    void addDeprecated(T value, bxString text) {
        m_deprecatedValues.insert(m_deprecatedValues.end(), value);
        m_deprecatedTexts.insert(m_deprecatedTexts.end(), text);
    }

  protected:
    /** What may be read from text. */
    bool isAllowed(T) const { return true; }

    T m_value;

  private:
    bxList<T> m_deprecatedValues;
    bxList<bxString> m_deprecatedTexts; // the n-th text belongs to the n-th value
};

template <class T>
bool bxDefault_NSC<T>::setDeprecatedFlag(bool on) {
    if (on) {
        const bxString current = valueToString(value());
        auto text = m_deprecatedTexts.begin();
        for (auto it = m_deprecatedValues.begin(); it != m_deprecatedValues.end(); ++it, ++text) {
            if (valueToString(*it) == current) {
                setDeprecated(true, *text);
                return true;
            }
        }
    }
    setDeprecated(false, "");
    return false;
}

template <class T>
T bxDefault_NSC<T>::validItem(bxString text) {
    const T read = stringToValue(text);
    if (text.failed())
        throw bxValueError(bxString("Invalid value of ") + name() + " = " + text, true);
    this->noteReading(readsWhole(text));
    return read;
}

/** A single value with a plain text form: `bxDefault<int>` reads and writes decimal integers. */
template <class T>
using bxDefault = bxWithTextForm<T, bxDefault_NSC<T>>;

extern template class bxDefault_NSC<int>;
extern template class bxDefault_NSC<bool>;
extern template class bxWithTextForm<int, bxDefault_NSC<int>>;

#endif
