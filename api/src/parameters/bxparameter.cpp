#include "parameters/bxparameter.h"

#include "output/bxcstream.h"
#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "parameters/bxistream.h"
#include "timing/bxexception.h"
#include "timing/bxsignal.h"

void bxThrowInvalidValue(bxString name, bxString text) {
    throw bxException(bxString("Invalid value of ") + name + " = " + text);
}

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
    if (!m_name.empty())
        out << m_name + "=" + valueString() + " ";
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

void bxParameter::list() const {
    g_ostrm << bxString(" ") + description() + "\n";
}

void bxParameter::obtainGuarded(bxIStream& in) {
    bxFaultGuard guard;
    if (sigsetjmp(guard.buffer(), 1) != 0)
        guard.raise();
    translate(in.getItemValue(m_name, defaultString(), prompt(), validString()));
}

void bxParameter::obtain(bxIStream& in) {
    if (in.iStream())
        g_ostrm.setOutLevel(outPerf); // a dialogue shows what it has understood
    obtainGuarded(in);
    list();
    if (in.source() == bxIStream::fromConsole)
        c_out.flush();
}

void bxParameter::fromIStream(bxIStream& in) {
    if (m_name.empty())
        return;
    const OutputLevel level = g_ostrm.outLevel();
    if (m_needsInput)
        obtain(in);
    else
        list();
    g_ostrm.setOutLevel(level);
}

void bxParameter::translate(bxString) {}
