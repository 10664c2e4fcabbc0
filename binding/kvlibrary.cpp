#include "kvlibrary.h"

#include "system/bxenvironment.h"

namespace {

// Initialised at compile time: a library may be named by any static initialiser.
constinit kvFailure s_failure = kvNegativeFails;
using StatusText = const char* (*)(int);
constinit StatusText s_text = nullptr;
constinit bool s_named = false;

} // namespace

kvLibrary::kvLibrary(const char* name, const char* version, kvFailure failure, const char* (*text)(int)) {
    bxRegLibInfo(*version == '\0' ? bxString(name) : bxString(name) + ", " + version);
    s_failure = failure == kvAsLibrary ? kvNegativeFails : failure;
    s_text = text;
    s_named = true;
}

kvStatusKind kvLibrary::kindOf(ZorStatus status, kvFailure failure) {
    if (failure == kvAsLibrary)
        failure = s_failure;
    if (status == 0 || failure == kvNeverFails)
        return kvStatusKind::good;
    const bool error = failure == kvNonzeroFails || (status < 0) == (failure == kvNegativeFails);
    return error ? kvStatusKind::error : kvStatusKind::warning;
}

const char* kvLibrary::statusText(ZorStatus status, bool error) {
    if (s_text)
        return s_text(status);
    if (s_named ||
        error != (status < 0)) // texts of another library, or for its own statuses, say nothing here
        return error ? "Error" : "Warning";
    // Before the session has set up the environment there is only the harness's own text.
    return (zor_GetStatusString ? zor_GetStatusString : s_zorGetStatusString)(status);
}
