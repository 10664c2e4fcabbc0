#include "output/bxsamefile.h"

#include <filesystem>
#include <system_error>

namespace fs = std::filesystem;

/** Where a file would be made that does not exist; a link to nothing leads on. */
static fs::path placeOf(fs::path path) {
    constexpr int maxLinks = 40;
    std::error_code error;
    for (int links = 0; links < maxLinks && fs::is_symlink(path, error); ++links)
        path = path.parent_path() / fs::read_symlink(path, error);
    return fs::weakly_canonical(fs::absolute(path, error), error);
}

bool bxSameFile(const bxString& a, const bxString& b) {
    const fs::path first(a.c_str());
    const fs::path second(b.c_str());
    std::error_code error;
    const bool firstExists = fs::exists(first, error);
    if (firstExists != fs::exists(second, error))
        return false;
    if (firstExists)
        return fs::is_regular_file(first, error) && fs::equivalent(first, second, error);
    return placeOf(first) == placeOf(second);
}
