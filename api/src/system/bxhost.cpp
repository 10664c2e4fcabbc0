#include "system/bxhost.h"

#include <sys/utsname.h>
#include <unistd.h>

bxHost::bxHost() {
    // One byte less: a name that is cut is not always terminated.
    if (gethostname(m_name.data(), m_name.size() - 1) != 0)
        m_name[0] = '\0';
}

bxOS::bxOS() {
    utsname names;
    if (uname(&names) == 0)
        m_text = std::string(names.sysname) + " (" + names.release + ", " + names.version + ")";
}

int bxGetNumOfProcessors() {
    const long online = sysconf(_SC_NPROCESSORS_ONLN);
    return online > 1 ? static_cast<int>(online) : 1;
}
