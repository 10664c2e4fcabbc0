#include "arguments.h"

#include "cells.h"

bool Arguments::next() {
    if (m_hasAttached)
        throw UsageError(m_word + " takes no value");
    if (m_next == m_words.size())
        return false;
    m_word = m_words[m_next++];
    if (m_word == "--" && !m_operandsOnly) {
        m_operandsOnly = true;
        return next();
    }
    m_operand = m_operandsOnly || m_word.size() < 2 || m_word[0] != '-';
    const std::size_t equals = m_word.find('=');
    m_hasAttached = !m_operand && m_word.starts_with("--") && equals != std::string::npos;
    if (m_hasAttached) {
        m_attached = m_word.substr(equals + 1);
        m_word.resize(equals);
    }
    return true;
}

bool Arguments::is(std::string_view option) const {
    return !m_operand && m_word == option;
}

std::string Arguments::value() {
    if (m_hasAttached) {
        m_hasAttached = false;
        return m_attached;
    }
    if (m_next == m_words.size())
        throw UsageError(m_word + " needs a value");
    return m_words[m_next++];
}

double Arguments::percent(double most) {
    const std::string text = value();
    std::string_view digits = trimmed(text);
    if (digits.ends_with('%'))
        digits = trimmed(digits.substr(0, digits.size() - 1));
    const auto number = toNumber(digits);
    if (!number || *number < 0 || *number > most) {
        throw UsageError(m_word + ": \"" + text + "\" is no percentage from 0 to " +
                         std::to_string(int(most)));
    }
    return *number / 100;
}

void Arguments::refuse() const {
    throw UsageError("unknown option " + m_word);
}
