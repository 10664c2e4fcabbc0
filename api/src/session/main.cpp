#include "data/bxalloc.h"
#include "framework/bxlayouts.h"
#include "framework/bxregister.h"
#include "output/bxtrace.h"
#include "session/bxsession.h"
#include "timing/bxturns.h"

#include <csignal>
#include <fcntl.h>
#include <optional>
#include <unistd.h>

namespace {
/**
 * A file opened later must not get the number of a standard stream that the caller has closed: the listing
 * would be written into it.
 */
void keepStandardStreams() {
    for (int number = STDIN_FILENO; number <= STDERR_FILENO; ++number)
        if (fcntl(number, F_GETFD) == -1)
            open("/dev/null", O_RDWR);
}
} // namespace

int main(int argc, char** argv) {
    keepStandardStreams();
    // A reader that has left ends neither the measurements nor the signal file.
    std::signal(SIGPIPE, SIG_IGN);
    bxTurns::start();
    bxLayoutFollower::start();

    g_trace.traceIn("main");
    std::optional<bxSession> defaultSession;
    bxSession& session = pSession ? *pSession : defaultSession.emplace();
    const int status = session.run(argc, argv);
    bxFreeAll();
    g_trace.traceOut("main");
    return status;
}
