#include "output/bxpaths.h"

namespace {

bool isSeparator(char c) {
    return c == '/' || c == '\\';
}

bxString programDir() {
    return bxPaths::m_exePath.getFileDir();
}

} // namespace

bool isAbsolutePath(const bxString& path) {
    return isSeparator(path[0]) || (path.length() > 1 && path[1] == ':');
}

bxString getDirPath(const bxString& path, const bxString& dir) {
    if (isAbsolutePath(path))
        return path;
    if (dir.empty())
        return programDir() + path;
    return path.view().starts_with(dir.view()) ? path : dir + path;
}

bxString bxPaths::genDirName(bxString dir) {
    if (dir.empty())
        return programDir();
    if (!isSeparator(dir[dir.length() - 1]))
        dir << '/';
    return isAbsolutePath(dir) ? dir : programDir() + dir;
}

void bxPaths::setDefName(const bxString& name) {
    m_defName = name.empty() ? m_exePath.getFileTitle() : name;
}

bxString bxPaths::genPathName(const bxString& dir, const bxString& name, const bxString& ext) {
    if (isAbsolutePath(name))
        return name;
    bxString file = name.empty() ? m_defName + ext : name;
    if (file.find('.') < 0)
        file << ext;
    return dir + file;
}
