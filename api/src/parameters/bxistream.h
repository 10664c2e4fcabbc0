/** \file
 * Where the values of parameters come from.
 */
#ifndef BXISTREAM_H
#define BXISTREAM_H

#include "output/bxstreams.h"
#include "parameters/bxdatalist.h"
#include "parameters/bxinifile.h"
#include "parameters/bxvaluesource.h"

#include <map>
#include <memory>
#include <set>
#include <string>

class bxParameter;
class i_stream;

/** Section of the ini file for the settings that are no test's own. */
inline constexpr char bxOwnSection[] = "Benchex";

/**
 * Finds the text of a parameter's value: a -d key comes before the ini file, the ini file before the console,
 * and the default stands where none of them gives a value. Keeps what was accepted in an ini file under
 * update, and remembers which names were asked for.
 */
class bxIStream {
  public:
    using Source = bxGiven::Source;
    using enum bxGiven::Source;

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
    /** Rewrites the ini file under update and ends that, but keeps its values; false when it could not be
     * written. */
    bool writeIniFile();
    /** Closes the ini file, which rewrites it when it is under update; false when it could not be written. */
    bool deleteIniFile();
    /** The ini file, or null. */
    bxIniFile* iniFile() const { return m_ini.get(); }
    /** True when every value found is written back into the ini file. */
    bool updateIni() const { return m_updateIni; }
    /** Sets the section in which values are sought; returns the previous one. */
    bxString setIniSection(bxString name);

    bxDataList& dataList() { return m_data; }

    /** Finds the value of `name`; an empty prompt stands for the name. */
    const bxGiven& find(const bxString& name, const bxString& deflt, const bxString& prompt);
    /** What `find` gave last. */
    const bxGiven& given() const { return m_given; }
    /** Where the last value came from, a `Source`. */
    int source() const { return m_given.source; }
    /** Whether a -d key or the ini file has a value for a name. */
    bool isGiven(const bxString& name);
    /**
     * Puts an accepted value, with the allowed values as comment, into the ini file under update. Where the
     * text would not read back (brackets, "//") the default text of the parameter, which says the same,
     * stands in; an ERR message says where that would not read back either.
     */
    void keep(const bxString& name, const bxString& text, const bxString& same, const bxString& valid);

    /** Finds a value and keeps it at once. */
    bxString getItemValue(bxString name, bxString deflt, bxString prompt, bxString valid);
    /** Asks on the console; a blank answer or the end of input gives the default. */
    bxString getItemValue(i_stream& in, bxString prompt, bxString deflt);

    /** \name What may be asked for
     * Names that the present section may have; `find` adds its own.
     * @{ */
    void expect(const bxString& name);
    /** Those of the parameters that need input; a list without any tells that the section has none. */
    void expect(const bxList<bxParameter*>& parms);
    using Expected = std::map<std::string, std::set<std::string>, std::less<>>;
    const Expected& expected() const { return m_expected; }
    /** @} */

    /** Writes a message at ERR, the first time that it is given. */
    void sayOnce(const bxString& message);

  private:
    i_stream* m_in = nullptr;
    std::unique_ptr<bxIniFile> m_ini;
    bxDataList m_data;
    bxString m_section = bxOwnSection;
    bool m_updateIni = false;
    bxGiven m_given;
    Expected m_expected; /**< names by section */
    std::set<std::string> m_said;
};

/**
 * Parameter input. It is built and destroyed as the streams of bxstreams.h are: behind them, so that whatever
 * its end has to say is still shown.
 */
extern bxIStream& g_istrm;

/** Keeps the parameter input alive. */
class bxIStreamInit {
  public:
    bxIStreamInit();
    ~bxIStreamInit();
    bxIStreamInit(const bxIStreamInit&) = delete;
    bxIStreamInit& operator=(const bxIStreamInit&) = delete;
};

static const bxIStreamInit s_bxIStreamInit;

#endif
