#include "parameters/bxfilereplace.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace {

/** A new file that is removed again unless it is kept. */
class BesideFile {
  public:
    explicit BesideFile(std::string name)
        : m_name(std::move(name)),
          m_fd(::open(m_name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666)) {}
    BesideFile(const BesideFile&) = delete;
    BesideFile& operator=(const BesideFile&) = delete;
    ~BesideFile() {
        const int error = errno;
        close();
        if (m_created)
            ::unlink(m_name.c_str());
        errno = error;
    }

    bool created() const { return m_created; }

    /** Gives the file owner and permissions of another one. */
    bool takeRights(const struct stat& from) {
        struct stat own {};
        if (::fstat(m_fd, &own) != 0)
            return false;
        const bool sameOwner = own.st_uid == from.st_uid && own.st_gid == from.st_gid;
        if (!sameOwner && ::fchown(m_fd, from.st_uid, from.st_gid) != 0)
            return false;
        return ::fchmod(m_fd, from.st_mode & 07777U) == 0;
    }

    /** Writes all of it through to the disk. */
    bool write(const std::string& content) {
        for (std::size_t done = 0; done < content.size();) {
            const ssize_t written = ::write(m_fd, content.data() + done, content.size() - done);
            if (written > 0)
                done += static_cast<std::size_t>(written);
            else if (written == 0 || errno != EINTR)
                return false;
        }
        const bool synced = ::fsync(m_fd) == 0 || errno == EINVAL; // not every file system can
        return close() && synced;
    }

    /** Takes the name of another file, whose content is gone then. */
    bool replace(const std::string& name) {
        if (std::rename(m_name.c_str(), name.c_str()) != 0)
            return false;
        m_created = false;
        return true;
    }

  private:
    bool close() {
        const int fd = std::exchange(m_fd, -1);
        return fd < 0 || ::close(fd) == 0;
    }

    std::string m_name;
    int m_fd;
    bool m_created = m_fd >= 0;
};

/** Only a plain file of a single name can be replaced without a change that shows elsewhere. */
bool isReplaceable(const std::string& name, const struct stat& old) {
    return S_ISREG(old.st_mode) && old.st_nlink == 1 && ::access(name.c_str(), W_OK) == 0;
}

} // namespace

bxReplaced bxReplaceFile(const std::string& name, const std::string& content) {
    struct stat old {};
    const bool exists = ::lstat(name.c_str(), &old) == 0;
    if (exists && !isReplaceable(name, old))
        return bxReplaced::refused;

    BesideFile beside(name + ".new" + std::to_string(::getpid()));
    if (!beside.created())
        return errno == EACCES || errno == EPERM || errno == ENAMETOOLONG ? bxReplaced::refused
                                                                          : bxReplaced::failed;
    if (exists && !beside.takeRights(old))
        return bxReplaced::refused;
    return beside.write(content) && beside.replace(name) ? bxReplaced::done : bxReplaced::failed;
}
