#include "session/bxkeyfiles.h"

#include "output/bxpaths.h"
#include "output/bxsamefile.h"
#include "session/bxcommand.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace {

struct FileKeys {
    std::string_view keys;
    const bxString& extension;
    bool lastCounts; ///< earlier ones are forgotten
    bxString (*path)(const bxString& name, const bxString& extension);
};

const FileKeys fileKeys[] = {
    {"oO", extOut, false, bxPaths::genOutPath}, {"rR", extCsv, false, bxPaths::genOutPath},
    {"q", extName, false, bxPaths::genOutPath}, {"uU", extSum, false, bxPaths::genOutPath},
    {"g", extSgl, true, bxPaths::genOutPath},   {"iI", extIni, true, bxPaths::genInPath}};

struct NamedFile {
    char key;
    const FileKeys* row;
    bxString path;
};

std::vector<NamedFile> filesOf(const bxCommandList& keys) {
    std::vector<NamedFile> files;
    for (const bxCommandKey& key : keys) {
        const auto row = std::ranges::find_if(
            fileKeys, [&key](const FileKeys& r) { return r.keys.find(key.key()) != r.keys.npos; });
        if (row == std::end(fileKeys) || (key.isKey('q') && key.argument().view().starts_with('+')))
            continue;
        if (row->lastCounts)
            std::erase_if(files, [row](const NamedFile& file) { return file.row == row; });
        files.push_back({key.key(), row, row->path(key.argument(), row->extension)});
    }
    return files;
}

} // namespace

bxSharedFile bxFindSharedFile(const bxCommandList& keys) {
    const std::vector<NamedFile> files = filesOf(keys);
    for (auto second = files.begin(); second != files.end(); ++second)
        for (auto first = files.begin(); first != second; ++first)
            if (bxSameFile(first->path, second->path))
                return {first->key, second->key, second->path};
    return {};
}
