/** \file
 * What the tests of ini files and of parameter input share.
 */
#ifndef INISUPPORT_H
#define INISUPPORT_H

#include "foundation/bxstring.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

/** A directory of its own for every test, with one ini file in it. */
class IniFile : public testing::Test {
  protected:
    IniFile() {
        std::string pattern = (std::filesystem::temp_directory_path() / "bxini.XXXXXX").string();
        m_dir = mkdtemp(pattern.data());
        m_path = m_dir / "a.ini";
    }
    ~IniFile() override { std::filesystem::remove_all(m_dir); }

    void put(const std::string& text) const { std::ofstream(m_path) << text; }
    bxString name() const { return m_path.c_str(); }
    std::string content() const {
        std::ostringstream text;
        text << std::ifstream(m_path).rdbuf();
        return text.str();
    }
    std::vector<std::string> files() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(m_dir))
            names.push_back(entry.path().filename());
        return names;
    }

    std::filesystem::path m_dir;
    std::filesystem::path m_path;
};

#endif
