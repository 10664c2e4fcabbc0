#include "parameters/bxistream.h"

#include "output/bxiostream.h"
#include "output/bxpaths.h"

bxIStream::~bxIStream() {
    setIStream(nullptr);
}

void bxIStream::setIStream(i_stream* in) {
    if (m_in != &c_in && m_in != in)
        delete m_in;
    m_in = in;
}

bool bxIStream::setIniFile(bxString name, bool update) {
    deleteIniFile();
    m_ini = std::make_unique<bxIniFile>();
    m_updateIni = update;
    return m_ini->open(bxPaths::getInPath(name), update);
}

void bxIStream::deleteIniFile() {
    m_ini.reset();
    m_updateIni = false;
}

bxString bxIStream::setIniSection(bxString name) {
    bxString previous = m_section;
    m_section = name;
    return previous;
}

bxString bxIStream::getItemValue(bxString name, bxString deflt, bxString prompt, bxString valid) {
    bxString result;
    m_source = m_in ? fromConsole : fromDefault;
    if (m_data.get(name, result)) {
        m_source = fromDataKey;
    } else if (m_ini) {
        result = m_ini->read(m_section, name, "");
        if (!result.empty())
            m_source = fromIniFile;
    }
    if (m_source == fromConsole)
        result = getItemValue(*m_in, prompt.empty() ? name : prompt, deflt);
    else if (m_source == fromDefault)
        result = deflt;
    if (m_updateIni && m_ini)
        m_ini->write(m_section, name, result, valid);
    return result;
}

bxString bxIStream::getItemValue(i_stream& in, bxString prompt, bxString deflt) {
    c_out << bxString("\n ") + prompt + " [" + deflt + "] = ";
    c_out.flush();
    bxString answer;
    in.getline(answer);
    m_source = answer.empty() ? fromDefault : fromConsole;
    return answer.empty() ? deflt : answer;
}
