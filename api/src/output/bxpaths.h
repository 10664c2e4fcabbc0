/** \file
 * Directories and names of the files that a session reads and writes.
 */
#ifndef BXPATHS_H
#define BXPATHS_H

#include "foundation/bxstring.h"
#include "output/bxtable.h"

inline const bxString extIni = ".ini";               /**< ini file */
inline const bxString extOut = ".txt";               /**< console listing */
inline const bxString extCsv = ".csv";               /**< result table */
inline const bxString extName = bxTable::nameFile;   /**< table of parameter names */
inline const bxString extSum = bxTable::summaryFile; /**< summary table */
inline const bxString extMem = bxTable::memoryFile;  /**< memory table */
inline const bxString extSgl = ".end";               /**< signal file */

/** True when the path begins with '/' or '\\', or has ':' as its second character. */
bool isAbsolutePath(const bxString& path);

/**
 * The full path of a file that a stream opens: an absolute path, or one that begins with `dir`, as it stands;
 * otherwise behind `dir`, or behind the program's directory if `dir` is empty.
 */
bxString getDirPath(const bxString& path, const bxString& dir);

/** The session-wide directories and the default name, all relative to the program's own directory. */
class bxPaths {
  public:
    inline static bxString m_exePath; /**< the program as it was called */
    inline static bxString m_inDir;   /**< directory of input files, ends in a separator */
    inline static bxString m_outDir;  /**< directory of output files, ends in a separator */
    inline static bxString m_defName; /**< title of files that are given no name */

    /** A directory, ending in a separator: the program's if empty, relative to the program's if relative. */
    static bxString genDirName(bxString dir);
    static void setInDir(const bxString& dir) { m_inDir = genDirName(dir); }
    static void setOutDir(const bxString& dir) { m_outDir = genDirName(dir); }
    /** An empty name stands for the title of the program's file. */
    static void setDefName(const bxString& name);

    /**
     * The path of a file named by the user: an absolute name as it stands; otherwise in `dir`, with the
     * default name if `name` is empty, and with `ext` if it holds no '.'.
     */
    static bxString genPathName(const bxString& dir, const bxString& name, const bxString& ext);
    static bxString genInPath(const bxString& name, const bxString& ext) {
        return genPathName(m_inDir, name, ext);
    }
    static bxString genOutPath(const bxString& name, const bxString& ext) {
        return genPathName(m_outDir, name, ext);
    }

    static bxString getInPath(const bxString& path) { return getDirPath(path, m_inDir); }
    static bxString getOutPath(const bxString& path) { return getDirPath(path, m_outDir); }
};

#endif
