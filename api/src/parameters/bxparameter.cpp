#include "parameters/bxparameter.h"

#include "foundation/bxreading.h"
#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "parameters/bxvalueerror.h"
#include "timing/bxsignal.h"

bxParameter::bxParameter(bxString name, bxString prompt) : m_name(name), m_prompt(prompt) {}

void bxParameter::reset() {
    m_valueProduced = false;
}

bxString bxParameter::valueString() const {
    return "";
}

bxString bxParameter::defaultString() const {
    return valueString();
}

bxString bxParameter::validString() const {
    return "";
}

bxString bxParameter::description() const {
    return m_name + " = " + defaultString();
}

bxString bxParameter::plainPrompt() const {
    return m_prompt.empty() ? m_name : m_prompt;
}

bxString bxParameter::prompt() const {
    const bxString valid = validString();
    return valid.empty() ? plainPrompt() : plainPrompt() + " {" + valid + "}";
}

void bxParameter::resetIterator() {
    m_valueProduced = false;
}

bool bxParameter::firstValue() {
    resetIterator();
    return nextValue();
}

bool bxParameter::nextValue() {
    m_valueProduced = !m_valueProduced;
    return m_valueProduced;
}

bool bxParameter::isDeprecatedParm() const {
    return false;
}

bool bxParameter::isDeprecatedValue() const {
    return false;
}

bool bxParameter::setDeprecatedFlag(bool) {
    return false;
}

void bxParameter::setDeprecated(bool on, bxString text) {
    m_deprecatedFlag = on;
    m_deprecatedText = text;
}

void bxParameter::toOStream(bxOStream& out) const {
    if (m_name.empty() || !out.shown())
        return;
    bxString text = m_name;
    out << (text << "=" << valueString() << " ");
}

int bxParameter::colmIndex() const {
    return -1;
}

bxString bxParameter::tableText() const {
    if (m_name.empty())
        return "";
    if (m_deprecatedFlag)
        return m_deprecatedText;
    if (m_outputFlags & quoted)
        return bxString(" \"") + valueString() + "\"";
    return valueString();
}

void bxParameter::toColumn(bxCStream& table, bxString text) const {
    if (colmIndex() < 0)
        table.addCell(text);
    else
        table.setColm(colmIndex(), text);
}

void bxParameter::toCStream(bxCStream& table) const {
    toColumn(table, tableText());
}

void bxParameter::nameToCStream(bxCStream& table) const {
    toColumn(table, m_name);
}

void bxParameter::refuse(const bxString& text) const {
    throw bxValueError(bxString("Invalid value of ") + m_name + " = " + text, true);
}

void bxParameter::refuseEmpty() {
    throw bxValueError("Empty iterator definition");
}

/** A dialogue shows what it has understood, whatever the level. */
void bxParameter::list(bool always) const {
    const bxString line = bxString(" ") + description() + "\n";
    if (always)
        g_ostrm << ERR << line << endMessage;
    else
        g_ostrm << line;
}

void bxParameter::translateGuarded(bxIStream& in) {
    bxFaultGuard guard;
    if (sigsetjmp(guard.buffer(), 1) != 0)
        guard.raise();
    translate(in.find(m_name, defaultString(), prompt()).text);
}

bxString bxParameter::details(const bxGiven& given, bool withText) const {
    return (withText ? m_name + " = " + given.text + ", " : bxString()) + given.origin;
}

/** Whether a text has the form of a range: two words and one that begins with an operation. */
static bool looksLikeRange(const bxString& text) {
    bxString first, last, step;
    return text.parse(first, last, step, "; ") == 3 && step.length() > 1 &&
           bxString("+-*").find(step.substr(0, 1)) >= 0 && bxReadInt(first).good && bxReadInt(last).good;
}

void bxParameter::obtain(bxIStream& in) {
    m_readPartly = false;
    const auto noRange = [&] {
        return !takesRanges() && looksLikeRange(in.given().text)
                   ? bxString("; ") + m_name + " takes values and no ranges, such as 16; 64; *2"
                   : bxString();
    };
    try {
        translateGuarded(in);
    } catch (const bxValueError& wrong) {
        const bxString allowed = wrong.showsText() ? allowedText() : bxString();
        throw wrong.withDetails(details(in.given(), !wrong.showsText()) +
                                (allowed.empty() ? bxString() : bxString("; allowed: ") + allowed) +
                                noRange());
    }
    if (m_readPartly)
        in.sayOnce(bxString("-- Warning: only the beginning was read of ") + details(in.given(), true) +
                   ": " + defaultString() + noRange() + "\n");
    else if (const bxString note = noRange(); !note.empty() && in.source() != bxIStream::fromDefault)
        in.sayOnce(bxString("-- Warning: ") + details(in.given(), true) + " is measured as values" + note +
                   "\n");
    in.keep(m_name, m_readPartly ? defaultString() : in.given().text, defaultString(), validString());
    list(in.iStream() != nullptr);
    if (in.source() == bxIStream::fromConsole)
        c_out.flush();
}

void bxParameter::fromIStream(bxIStream& in) {
    if (m_name.empty())
        return;
    if (m_needsInput)
        obtain(in);
    else
        list(false);
}

void bxParameter::translate(bxString) {}
