#include "pagesections.h"

std::optional<Json> readPairs(SectionSources& sources) {
    Json results = Json::array();
    for (auto& [path, result] : sources.ofSchema("benchex-pair-1")) {
        if (!result.contains("rows") || !result["rows"].is_array())
            throw TableError(path.string() + ": is no complete result of benchex-compare --pair --json");
        results.push_back(std::move(result));
    }
    return results.empty() ? std::nullopt : std::optional(std::move(results));
}
