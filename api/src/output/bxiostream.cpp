#include "output/bxiostream.h"

#include "output/bxdiscard.h"
#include "output/bxostream.h"
#include "output/bxpaths.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <string>
#include <unistd.h>
#include <utility>

namespace {

/** The mode of fopen; empty when the file is neither to be read nor to be written. */
std::string openMode(int mode) {
    std::string text = mode & ioRead ? "r" : mode & ioWrite ? (mode & ioAppend ? "a" : "w") : "";
    if (!text.empty() && mode & ioBinary)
        text += 'b';
    return text;
}

bxString completedName(const bxString& name, int mode) {
    if (mode & ioNameAsGiven)
        return name;
    return mode & ioRead ? bxPaths::getInPath(name) : mode & ioWrite ? bxPaths::getOutPath(name) : name;
}

/** As fopen for writing, without emptying the file. */
std::FILE* openFull(const char* path) {
    constexpr mode_t anybody = 0666; // less what the user masks
    const int number = ::open(path, O_WRONLY | O_CREAT, anybody);
    return number < 0 ? nullptr : fdopen(number, "w");
}

/** The reason stands on a line of its own, behind the text that others may look for. */
void reportUnopened(const bxString& name, int mode, int error) {
    g_ostrm << ERR << "-- Can't open file " << name;
    g_ostrm << (mode & ioRead ? " to read" : mode & ioWrite ? " to write" : "");
    g_ostrm << ": " << getLastErrorMessage() << "\n   " << std::strerror(error) << "\n" << endMessage;
}

} // namespace

bxString getLastErrorMessage() {
    return {};
}

io_stream::io_stream(const bxString& name, int mode, bool report) {
    const bool discarded = g_discardOutput && (mode & ioRead) == 0;
    const bxString path = discarded ? bxString("/dev/null") : completedName(name, mode);
    if (const std::string how = openMode(mode); !how.empty())
        m_file =
            how == "w" && mode & ioEmptyLate ? openFull(path.c_str()) : std::fopen(path.c_str(), how.c_str());
    if (!m_file && report)
        reportUnopened(path, mode, errno);
}

void io_stream::flush() {
    if (m_file)
        std::fflush(m_file);
}

bool io_stream::close() {
    if (!m_file || m_file == stdin || m_file == stdout)
        return false;
    std::fclose(m_file);
    m_file = nullptr;
    return true;
}

bool i_stream::getline(bxString& line) {
    line = bxString();
    std::FILE* file = handle();
    if (!file)
        return false;
    std::string text;
    std::array<char, 512> piece;
    while (std::fgets(piece.data(), static_cast<int>(piece.size()), file)) {
        const std::size_t n = std::strlen(piece.data());
        text.append(piece.data(), n);
        if (n + 1 < piece.size() || text.back() == '\n')
            break;
    }
    if (!text.empty() && text.back() == '\n')
        text.pop_back();
    line = bxString(std::string_view(text));
    return !line.empty() || (!std::feof(file) && !std::ferror(file));
}

void o_stream::write(std::string_view text) {
    // Fails for what is no file, which holds nothing either.
    if (std::exchange(m_full, false) && handle() && ftruncate(fileno(handle()), 0) != 0)
        errno = 0;
    std::fwrite(text.data(), 1, text.size(), handle() ? handle() : stdout);
}

o_stream& operator<<(o_stream& out, const bxString& text) {
    out.write(text.c_str());
    return out;
}

o_stream* createOStream(const bxString& name, bool append) {
    auto stream =
        std::make_unique<o_stream>(name, ioWrite | (append ? ioAppend : ioEmptyLate) | ioNameAsGiven, true);
    return stream->handle() ? stream.release() : nullptr;
}

bool bxOutputs::addStream(const bxString& name, bool append) {
    std::unique_ptr<o_stream> stream(createOStream(name, append));
    if (!stream)
        return false;
    push_back(stream.get());
    m_owned.push_back(std::move(stream));
    return true;
}

void bxOutputs::flush() {
    for (o_stream* stream : *this)
        stream->flush();
}

void bxOutputs::close() {
    for (auto it = begin(); it != end();)
        it = (*it)->close() ? erase(it) : std::next(it);
    m_owned.clear();
}
