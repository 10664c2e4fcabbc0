/** \file
 * Parts of the page beside tables and charts: what other programs and files tell of the same functions. A
 * part has
 * - NAME.cpp here, whose function looks for its files and makes the data,
 * - NAME.js here, which shows them (addSection in report/sections.js says how), and a NAME.css where it needs
 * one,
 * - a line in pagesections.cpp.
 */
#ifndef PAGESECTIONS_H
#define PAGESECTIONS_H

#include "json.h"
#include "resulttable.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string_view>
#include <utility>
#include <vector>

/** Where a section looks for its data. */
class SectionSources {
  public:
    using File = std::pair<std::filesystem::path, Json>;

    /** \param json  files that were given, or stand in directories that were */
    SectionSources(const Collection& tables, std::vector<std::filesystem::path> json)
        : m_tables(tables), m_json(std::move(json)) {}

    /** The runs know their files, beside which others may stand (`besideTable`). */
    const Collection& tables() const { return m_tables; }
    /** The json files whose member "schema" is this. \throws TableError when one is broken */
    std::vector<File> ofSchema(std::string_view schema);
    /** Whether a section asked for this json file. */
    bool isUsed(const std::filesystem::path& json) const { return m_used.contains(json); }

  private:
    const Collection& m_tables;
    std::vector<std::filesystem::path> m_json;
    std::set<std::filesystem::path> m_used;
};

/** A part of the page. */
struct PageSection {
    const char* name;                                     /**< of its member in "sections" of the data */
    std::optional<Json> (*read)(SectionSources& sources); /**< nothing: the page does without */
};

/** Comparisons of two sides: files of benchex-compare --pair --json. */
std::optional<Json> readPairs(SectionSources& sources);
/** Calls explained: files of benchex-explain --json. */
std::optional<Json> readExplained(SectionSources& sources);

/** The data of all sections that found some, by name. */
Json readSections(SectionSources& sources);

#endif
