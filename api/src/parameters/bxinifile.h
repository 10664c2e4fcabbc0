/** \file
 * The ini file of parameter values: its model in memory, reading and rewriting.
 */
#ifndef BXINIFILE_H
#define BXINIFILE_H

#include "parameters/bxnamedlist.h"
#include "parameters/bxvaluesource.h"

#include <string>

class i_stream;

/** One line of a section: a key, its value ("~~~" for a key alone), and the comment written behind it. */
struct bxValueItem {
    explicit bxValueItem(const bxString& k) : key(k) {}
    bxString key;
    bxString value;
    bxString comment;
    int line = 0; /**< of the file, from 1; 0 for what is new */
};

inline const bxString& bxNameOfValue(const bxValueItem& item) {
    return item.key;
}

/** The items of one section in file order. */
class bxValues : public bxNamedList<bxValueItem, bxNameOfValue> {
  public:
    /** The item with that key, or null. */
    bxValueItem* exist(const bxString& key);
    /** Gives the key a new value and keeps its comment, or appends a new item; returns the item. */
    bxValueItem& set(const bxString& key, const bxString& value, const bxString& comment);
};

/** A named section. */
struct bxSectionItem {
    explicit bxSectionItem(const bxString& n) : name(n) {}
    bxString name;
    bxValues values;
    int line = 0; /**< of its first header, as for items */
};

inline const bxString& bxNameOfSection(const bxSectionItem& item) {
    return item.name;
}

/** The sections in file order. */
class bxSections : public bxNamedList<bxSectionItem, bxNameOfSection> {
  public:
    /** The section of that name, or null. */
    bxSectionItem* exist(const bxString& name);
    /** The section of that name, appended when it is new. */
    bxSectionItem& obtain(const bxString& name);
};

/**
 * Sections of "key=value" lines, read once into memory and, when writable, written back on `close`. Names and
 * keys are compared exactly. "//" starts a comment, anywhere on a line; lines before the first section are
 * ignored. What a line says beside its section's name in brackets is kept as a line of that section.
 */
class bxIniFile : public bxValueSource {
  public:
    bxIniFile() = default;
    bxIniFile(const bxIniFile&) = delete;
    bxIniFile& operator=(const bxIniFile&) = delete;
    ~bxIniFile() override;

    /**
     * Reads the file of that very name. A missing file is created when `writable`, else its lack is reported
     * as a message and the model stays empty. False when the file can be neither read nor created.
     */
    bool open(bxString name, bool writable);
    /** Writes the file back if it is writable, which it then is no more; false when it could not be written.
     */
    bool finish();
    /** As `finish`, and forgets all; false when it could not be written. */
    bool close();
    /**
     * Rewrites a writable file. A plain file is replaced whole by a new one written beside it; where that
     * cannot be (a link, a device, a closed directory) it is written in place. Failures are reported as
     * messages; true unless one happened.
     */
    bool updateFile() const;

    /** The value of a key, or `deflt` when there is none. */
    bxString read(bxString section, bxString key, bxString deflt);
    /** Sets a key, appending section and key where missing; an empty key only makes the section. */
    void write(bxString section, bxString key, bxString value, bxString comment);
    /** Sets a key without a value. */
    void write(bxString section, bxString key);
    /** Makes sure that the section exists. */
    void write(bxString section);

    bool sectionExist(bxString section);
    bool valueExist(bxString section, bxString key);
    /** The items of a section, or null. */
    bxValues* getSectionValues(bxString section);
    void eraseSection(bxString section);
    void deleteKey(bxString section, bxString key);

    /** The value of the question's name in its section; an empty one counts as none. */
    std::optional<bxGiven> valueOf(const bxQuestion& question) override;
    /** As `write`, and an existing key without a comment gets this one. */
    void keep(const bxString& section, const bxString& key, const bxString& value, const bxString& comment);
    /** Whether a written value reads back as it is. */
    static bool readsBack(const bxString& key, const bxString& value);

    bxSections& sections() { return m_sections; }
    bxString fileName() const { return m_name; }
    bool writable() const { return m_writable; }

    /** True for a section header, a line with "[" and later "]"; `name` is the trimmed text between them. */
    static bool getSection(const bxString& line, bxString& name);
    /** Splits a line at its first "=" into trimmed key and value; without "=" the value is "~~~". */
    static bool getValue(const bxString& line, bxString& key, bxString& value);

  private:
    bool parse(i_stream& in);
    std::string text() const;

    bxString m_name;
    bxSections m_sections;
    bool m_writable = false;
};

#endif
