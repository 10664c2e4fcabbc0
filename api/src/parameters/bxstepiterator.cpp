#include "parameters/bxstepiterator.h"

#include "parameters/bxvalueerror.h"

namespace {

bool isOperation(char c) {
    return c == stepAdd || c == stepSubtract || c == stepMultiply;
}

/** Whether a sequence with this step begins at `first`, goes towards `last` and gets there. */
bool reaches(long long first, long long last, long long step, StepOprtn op) {
    const bool descending = first > last;
    switch (op) {
    case stepAdd:
        return step != 0 && (step < 0) == descending;
    case stepSubtract:
        return step != 0 && (step > 0) == descending;
    case stepMultiply:
        if (step < 2)
            return false;
        return (first > 0 && last > 0 && !descending) || (first < 0 && last < 0 && descending);
    default:
        return false;
    }
}

} // namespace

template <class T>
void bxStepIterator<T>::validate(T first, T last, T& step, StepOprtn& op, bool& descending) const {
    descending = first > last;
    if (!reaches(first, last, step, op))
        throw bxValueError("Conflict between iterator limits and operation");
}

template <class T>
void bxStepIterator<T>::setRange(T first, T last, char op, T step) {
    auto operation = static_cast<StepOprtn>(op);
    bool descending = false;
    validate(first, last, step, operation, descending);
    m_first = first;
    m_last = last;
    m_step = step;
    m_op = operation;
    m_descending = descending;
    this->m_started = false;
}

template <class T>
bool bxStepIterator<T>::translateStep(bxString text) {
    bxString firstWord, lastWord, stepWord;
    if (text.parse(firstWord, lastWord, stepWord, "; ") != 3 || !isOperation(stepWord[0]))
        return false;
    const auto number = [this](const char* what, const bxString& word) {
        const bxReading<T> reading = bxTextForm<T>::read(word);
        if (!reading.good)
            throw bxValueError(bxString("Invalid ") + what + " = " + word);
        this->noteReading(reading.whole);
        return reading.value;
    };
    const T first = number("first value", firstWord);
    const T last = number("last value", lastWord);
    const T step = number("step", stepWord.substr(1));
    setRange(first, last, stepWord[0], step);
    return true;
}

template <class T>
void bxStepIterator<T>::translate(bxString text) {
    if (translateStep(text))
        return;
    bxIterator<T>::translate(text);
    m_op = stepList;
}

template <class T>
bool bxStepIterator<T>::beyondLast() const {
    return m_descending ? m_position < m_last : m_position > m_last;
}

template <class T>
void bxStepIterator<T>::advance() {
    // Both operands are 32-bit, so that no step leaves the 64-bit range.
    if (m_op == stepMultiply)
        m_position *= m_step;
    else
        m_position += m_op == stepAdd ? m_step : -static_cast<long long>(m_step);
}

template <class T>
bool bxStepIterator<T>::nextValue() {
    if (!isRange())
        return bxIterator<T>::nextValue();
    if (!this->m_started) {
        this->m_started = true;
        m_position = m_first;
    } else if (!beyondLast()) {
        advance();
    }
    if (beyondLast())
        return false;
    this->m_value = static_cast<T>(m_position);
    return true;
}

template <class T>
bxString bxStepIterator<T>::defaultString() const {
    if (!isRange())
        return bxIterator<T>::defaultString();
    return bxString() << m_first << "; " << m_last << "; " << static_cast<char>(m_op) << m_step;
}

template <class T>
bxString bxStepIterator<T>::description() const {
    if (!isRange())
        return bxIterator<T>::description();
    const bxString name = this->name();
    bxString text = "for (";
    text << name << " = " << m_first << "; " << name << (m_descending ? " >= " : " <= ") << m_last << "; ";
    return text << name << " " << static_cast<char>(m_op) << "= " << m_step << ")";
}

template <class T>
bxString bxStepIterator<T>::prompt() const {
    return isRange() ? bxString("for ") + this->name() : this->name();
}

template class bxStepIterator<int>;
