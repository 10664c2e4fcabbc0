/** \file
 * Where the values of parameters come from.
 */
#ifndef BXISTREAM_H
#define BXISTREAM_H

#include "parameters/bxdatalist.h"
#include "parameters/bxinifile.h"

#include <memory>

class i_stream;

/** Section of the ini file for the settings that are no test's own. */
inline constexpr char bxOwnSection[] = "Benchex";

/**
 * Finds the text of a parameter's value: a -d key comes before the ini file, the ini file before the console,
 * and the default stands where none of them gives a value. Writes what it found back into an ini file under
 * update.
 */
class bxIStream {
  public:
    /** Where a value came from. */
    enum Source { fromDefault = 0, fromConsole = 1, fromIniFile = 2, fromDataKey = 3 };

    bxIStream() = default;
    bxIStream(const bxIStream&) = delete;
    bxIStream& operator=(const bxIStream&) = delete;
    virtual ~bxIStream();

    /** Attaches a stream for questions (null for none) and owns it, unless it is the console `c_in`. */
    void setIStream(i_stream* in);
    i_stream* iStream() const { return m_in; }

    /** Opens an ini file of the input directory; false when it can be neither read nor (with `update`)
     * created. */
    bool setIniFile(bxString name, bool update);
    /** Closes the ini file, which rewrites it when it is under update. */
    void deleteIniFile();
    /** The ini file, or null. */
    bxIniFile* iniFile() const { return m_ini.get(); }
    /** True when every value found is written back into the ini file. */
    bool updateIni() const { return m_updateIni; }
    /** Sets the section in which values are sought; returns the previous one. */
    bxString setIniSection(bxString name);
    bxString iniSection() const { return m_section; }

    bxDataList& dataList() { return m_data; }
    /** Where the last value came from, a `Source`. */
    int source() const { return m_source; }

    /** Finds the value of `name`; `valid` tells the allowed values in words and becomes the comment in the
     * ini file. */
    bxString getItemValue(bxString name, bxString deflt, bxString prompt, bxString valid);
    /** Asks on the console; an empty answer or the end of input gives the default. */
    bxString getItemValue(i_stream& in, bxString prompt, bxString deflt);

  private:
    i_stream* m_in = nullptr;
    std::unique_ptr<bxIniFile> m_ini;
    bxDataList m_data;
    bxString m_section = bxOwnSection;
    bool m_updateIni = false;
    int m_source = fromDefault;
};

#endif
