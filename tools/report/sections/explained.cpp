#include "pagesections.h"

std::optional<Json> readExplained(SectionSources& sources) {
    Json calls = Json::array();
    Json rates = Json::object();
    for (auto& [path, file] : sources.ofSchema("benchex-explain")) {
        for (Json& call : file.value("calls", Json::array()))
            calls.push_back(std::move(call));
        if (file.contains("machine"))
            rates = file["machine"].value("rates", Json::object());
    }
    if (calls.empty())
        return std::nullopt;
    return Json{{"calls", std::move(calls)}, {"rates", std::move(rates)}};
}
