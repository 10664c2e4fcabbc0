#include "sides.h"

#include <algorithm>
#include <sstream>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

/** A name of the environment before "=". */
bool isSetting(const std::string& word) {
    const std::size_t equals = word.find('=');
    return equals != std::string::npos && equals > 0 &&
           std::all_of(word.begin(), word.begin() + static_cast<std::ptrdiff_t>(equals), [](char c) {
               return c == '_' || (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
           });
}

bool isProgram(const fs::path& path) {
    return fs::is_regular_file(path) && access(path.c_str(), X_OK) == 0;
}

bool holdsLibrary(const fs::path& directory) {
    std::error_code unreadable;
    for (const auto& entry : fs::directory_iterator(directory, unreadable)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with("lib") && name.find(".so") != std::string::npos)
            return true;
    }
    return false;
}

/** Takes a word that is a path; false when it is none. */
bool takePath(Side& side, const std::string& word) {
    const fs::path path = fs::absolute(word);
    if (fs::is_directory(path)) {
        if (!holdsLibrary(path))
            throw PairError("there is no library in " + word);
        side.libraries = fs::canonical(path);
        return true;
    }
    if (!isProgram(path))
        return false;
    side.program = fs::canonical(path);
    return true;
}

/** Keys whose argument may stand in the next word. */
bool needsNextWord(const std::string& key) {
    return key.size() == 2 && key[0] == '-';
}

} // namespace

Side readSide(const std::string& text, const fs::path& program, const std::vector<std::string>& keys) {
    Side side{text, program, {}, {}, keys};
    if (!text.empty() && text[0] != '-' && takePath(side, text))
        return side;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (word.starts_with("--"))
            throw PairError("\"" + word + "\" is no key of a side; --pair needs two sides");
        if (word[0] == '-') {
            side.keys.push_back(word);
            if (needsNextWord(word) && words >> word)
                side.keys.push_back(word);
        } else if (isSetting(word)) {
            side.environment.push_back(word);
        } else if (!takePath(side, word)) {
            throw PairError("\"" + word +
                            "\" is neither a directory of a library nor a program, a key or NAME=value");
        }
    }
    return side;
}
