#include "pagesections.h"

#include <array>
#include <fstream>
#include <iterator>

namespace {

/** In the order of the page. */
constexpr std::array pageSections{
    PageSection{"pair", readPairs},
    PageSection{"explained", readExplained},
};

/** Whether the file says early on that it is of the schema: large files of others are not read for nothing.
 */
bool saysSchema(std::ifstream& file, std::string_view schema) {
    std::string beginning(4096, '\0');
    file.read(beginning.data(), static_cast<std::streamsize>(beginning.size()));
    file.clear();
    file.seekg(0);
    return beginning.find('"' + std::string(schema) + '"') != std::string::npos;
}

} // namespace

std::vector<SectionSources::File> SectionSources::ofSchema(std::string_view schema) {
    std::vector<File> found;
    for (const auto& path : m_json) {
        std::ifstream file(path, std::ios::binary);
        if (!file || !saysSchema(file, schema))
            continue;
        m_used.insert(path);
        try {
            found.emplace_back(path, Json::parse(file));
        } catch (const Json::exception& error) {
            throw TableError(path.string() + ": " + error.what());
        }
    }
    return found;
}

Json readSections(SectionSources& sources) {
    Json sections = Json::object();
    for (const PageSection& section : pageSections)
        if (auto data = section.read(sources))
            sections[section.name] = std::move(*data);
    return sections;
}
