#include "session/bxkeyfiles.h"

#include "output/bxsamefile.h"
#include "session/bxcommand.h"
#include "session/bxkeys.h"

#include <algorithm>
#include <vector>

namespace {

struct NamedFile {
    char key;
    const bxKeyFile* kind;
    bxString path;
};

std::vector<NamedFile> filesOf(const bxCommandList& keys) {
    std::vector<NamedFile> files;
    for (const bxCommandKey& key : keys) {
        const auto row = std::ranges::find(bxKeyTable(), key.key(), &bxKeyRow::key);
        if (row == bxKeyTable().end() || !row->file.extension ||
            (key.isKey('q') && key.argument().view().starts_with('+')))
            continue;
        const bxKeyFile& kind = row->file;
        if (kind.lastCounts)
            std::erase_if(files, [&kind](const NamedFile& f) { return f.kind->extension == kind.extension; });
        files.push_back({key.key(), &kind, kind.path(key.argument(), *kind.extension)});
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
