#include "parameters/bxinifile.h"

#include "output/bxiostream.h"
#include "output/bxostream.h"
#include "parameters/bxfilereplace.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>

namespace {

constexpr char bareKey[] = "~~~";

bxString trimmed(std::string_view text) {
    bxString result(text);
    result.trim();
    return result;
}

std::string_view withoutComment(std::string_view line) {
    return line.substr(0, line.find("//"));
}

/** An ERR message in the form of those of the file streams, with the system's text for `error`. */
void reportFailure(const bxString& name, const char* what, int error) {
    g_ostrm << ERR << "-- Can't " << what << " " << name << ": " << std::strerror(error) << "\n"
            << endMessage;
}

bool writeInPlace(const bxString& name, const std::string& content) {
    o_stream out(name, ioWrite | ioNameAsGiven, true);
    if (!out.handle())
        return false;
    errno = 0;
    out.write(content.c_str());
    out.flush();
    if (out.failed())
        reportFailure(name, "write file", errno);
    return !out.failed();
}

/** What holds no settings to keep, and may be read for ever. */
bool isDevice(const bxString& name) {
    std::error_code error;
    const std::filesystem::path path(name.c_str());
    return std::filesystem::is_character_file(path, error) || std::filesystem::is_fifo(path, error);
}

/** A section header that says nothing else. */
bool isPlainHeader(std::string_view line) {
    return line.front() == '[' && line.find(']') + 1 == line.size();
}

} // namespace

bxValueItem* bxValues::exist(const bxString& key) {
    const iterator place = find(key);
    return place == end() ? nullptr : &*place;
}

bxValueItem& bxValues::set(const bxString& key, const bxString& value, const bxString& comment) {
    bxValueItem* item = exist(key);
    if (!item) {
        item = &append(key);
        item->comment = comment;
    }
    item->value = value;
    return *item;
}

bxSectionItem* bxSections::exist(const bxString& name) {
    const iterator place = find(name);
    return place == end() ? nullptr : &*place;
}

bxSectionItem& bxSections::obtain(const bxString& name) {
    bxSectionItem* const item = exist(name);
    return item ? *item : append(name);
}

bxIniFile::~bxIniFile() {
    close();
}

bool bxIniFile::open(bxString name, bool writable) {
    close();
    m_name = name;
    m_writable = writable;
    if (!writable || !isDevice(name)) {
        i_stream in(name, ioRead | ioNameAsGiven, !writable);
        if (in.handle())
            return parse(in);
        if (!writable)
            return false;
    }
    const o_stream created(name, ioWrite | ioNameAsGiven, true);
    m_writable = created.handle() != nullptr;
    return m_writable;
}

bool bxIniFile::parse(i_stream& in) {
    bxValues* values = nullptr;
    bxString raw, name, key, value;
    errno = 0;
    for (int number = 1; in.getline(raw); ++number) {
        const bxString line = trimmed(withoutComment(raw.view()));
        if (line.empty())
            continue;
        if (getSection(line, name)) {
            bxSectionItem& section = m_sections.obtain(name);
            section.line = section.line == 0 ? number : section.line;
            values = &section.values;
            if (m_writable && !isPlainHeader(line.view()))
                values->set(line, bareKey, "");
        } else if (values) {
            getValue(line, key, value);
            values->set(key, value, "").line = number;
        }
    }
    if (!in.failed())
        return true;
    // What was not read must not be overwritten: a directory, for example, opens but does not read.
    reportFailure(m_name, "read file", errno);
    m_sections.removeAll();
    m_writable = false;
    return false;
}

bool bxIniFile::finish() {
    const bool written = updateFile();
    m_writable = false;
    return written;
}

bool bxIniFile::close() {
    const bool written = finish();
    m_sections.removeAll();
    return written;
}

bool bxIniFile::updateFile() const {
    if (!m_writable)
        return true;
    const std::string content = text();
    switch (bxReplaceFile(m_name.c_str(), content)) {
    case bxReplaced::done:
        return true;
    case bxReplaced::refused:
        return writeInPlace(m_name, content);
    case bxReplaced::failed:
        break;
    }
    reportFailure(m_name, "write file", errno);
    return false;
}

std::string bxIniFile::text() const {
    std::string text;
    for (const bxSectionItem& section : m_sections) {
        text.append("\n[").append(section.name.view()).append("]\n");
        for (const bxValueItem& item : section.values) {
            text.append(item.key.view());
            if (item.value != bareKey) {
                text.append("=").append(item.value.view());
                if (!item.comment.empty())
                    text.append("\t// ").append(item.comment.view());
            }
            text.append("\n");
        }
    }
    return text;
}

bxString bxIniFile::read(bxString section, bxString key, bxString deflt) {
    key.trim();
    bxValues* const values = getSectionValues(section);
    const bxValueItem* const item = values ? values->exist(key) : nullptr;
    return item ? item->value : deflt;
}

void bxIniFile::write(bxString section, bxString key, bxString value, bxString comment) {
    bxValues& values = m_sections.obtain(section).values;
    key.trim();
    if (!key.empty())
        values.set(key, value, comment);
}

void bxIniFile::write(bxString section, bxString key) {
    write(section, key, bareKey, "");
}

void bxIniFile::write(bxString section) {
    m_sections.obtain(section);
}

std::optional<bxGiven> bxIniFile::valueOf(const bxQuestion& question) {
    bxValues* const values = getSectionValues(question.section);
    const bxValueItem* const item = values ? values->exist(question.name) : nullptr;
    if (!item || item->value.empty())
        return std::nullopt;
    bxString origin = bxString("from ini file ") + m_name;
    if (item->line > 0)
        origin << ", line " << item->line;
    return bxGiven{item->value, bxGiven::fromIniFile, origin};
}

void bxIniFile::keep(const bxString& section, const bxString& key, const bxString& value,
                     const bxString& comment) {
    bxValueItem& item = m_sections.obtain(section).values.set(key, value, comment);
    if (item.comment.empty())
        item.comment = comment;
}

bool bxIniFile::readsBack(const bxString& key, const bxString& value) {
    const bxString written = key + "=" + value;
    bxString readKey, readValue, section;
    getValue(trimmed(withoutComment(written.view())), readKey, readValue);
    return readKey == key && readValue == value && value != bareKey && !getSection(written, section) &&
           written.find("\n") < 0;
}

bool bxIniFile::sectionExist(bxString section) {
    return m_sections.exist(section) != nullptr;
}

bool bxIniFile::valueExist(bxString section, bxString key) {
    bxValues* const values = getSectionValues(section);
    return values && values->exist(key);
}

bxValues* bxIniFile::getSectionValues(bxString section) {
    bxSectionItem* const item = m_sections.exist(section);
    return item ? &item->values : nullptr;
}

void bxIniFile::eraseSection(bxString section) {
    m_sections.remove(section);
}

void bxIniFile::deleteKey(bxString section, bxString key) {
    if (bxValues* const values = getSectionValues(section))
        values->remove(key);
}

bool bxIniFile::getSection(const bxString& line, bxString& name) {
    const std::string_view text = line.view();
    const std::size_t open = text.find('[');
    const std::size_t end = open == text.npos ? text.npos : text.find(']', open);
    if (end == text.npos)
        return false;
    name = trimmed(text.substr(open + 1, end - open - 1));
    return true;
}

bool bxIniFile::getValue(const bxString& line, bxString& key, bxString& value) {
    const std::string_view text = line.view();
    const std::size_t equals = text.find('=');
    key = trimmed(text.substr(0, equals));
    value = equals == text.npos ? bxString(bareKey) : trimmed(text.substr(equals + 1));
    return true;
}
