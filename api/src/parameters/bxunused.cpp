#include "parameters/bxunused.h"

#include "foundation/bxnearest.h"
#include "parameters/bxistream.h"

#include <algorithm>

namespace {

/** Names that have been asked for, or could have been. */
bxStringList toList(const std::set<std::string>& names) {
    bxStringList list;
    for (const std::string& name : names)
        list.push_back(name.c_str());
    return list;
}

/** The whole line. A known name may still go unused: its branch of the settings was not taken. */
bxString lineFor(const bxString& what, const bxString& name, const bxStringList& known) {
    const bxString nearest = bxNearestName(name, known);
    bxString line = bxString("-- ") + what + " is not used";
    if (nearest == name)
        return line + " in this run\n";
    line << ": nothing in this run asks for " << name;
    return nearest.empty() ? line + "\n" : line + ", the nearest name is " + nearest + "\n";
}

class Report {
  public:
    Report(bxIStream& in, const bxStringList& sections) : m_in(in), m_sections(sections) {}

    bxUnused all() {
        addData();
        if (bxIniFile* const ini = m_in.iniFile())
            for (const bxSectionItem& section : ini->sections())
                addSection(section);
        return m_unused;
    }

  private:
    void addData() {
        std::set<std::string> names;
        for (const auto& [section, expected] : m_in.expected())
            names.insert(expected.begin(), expected.end());
        for (const bxData& data : m_in.dataList()) {
            if (data.asked)
                continue;
            m_unused.unknownData = m_unused.unknownData || !names.contains(data.name.c_str());
            m_unused.lines.push_back(
                lineFor(bxString("-d") + data.name + "=" + data.value, data.name, toList(names)));
        }
    }

    void addSection(const bxSectionItem& section) {
        const auto read = m_in.expected().find(section.name.view());
        if (read != m_in.expected().end())
            addKeys(section, read->second);
        else if (std::find(m_sections.begin(), m_sections.end(), section.name) == m_sections.end())
            m_unused.lines.push_back(
                lineFor(bxString("Section") + place(section, section.line), section.name, m_sections));
    }

    void addKeys(const bxSectionItem& section, const std::set<std::string>& expected) {
        for (const bxValueItem& item : section.values)
            if (item.line > 0 && !expected.contains(item.key.c_str()))
                m_unused.lines.push_back(lineFor(item.key + " of section" + place(section, item.line),
                                                 item.key, toList(expected)));
    }

    bxString place(const bxSectionItem& section, int line) const {
        return bxString(" [") + section.name + "] (ini file " + m_in.iniFile()->fileName() + ", line " << line
                                                                                                       << ")";
    }

    bxIStream& m_in;
    const bxStringList& m_sections;
    bxUnused m_unused;
};

} // namespace

bxUnused bxFindUnused(bxIStream& in, const bxStringList& sections) {
    return Report(in, sections).all();
}
