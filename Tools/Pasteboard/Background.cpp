#include "Pasteboard/Background.h"

#include "Support/Error.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

/// Detaches the child: readers of the command's output see its end, and the child keeps no directory busy.
void detach() {
    setsid();
    static_cast<void>(!chdir("/"));
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, standard);
}

} // namespace

void serveInBackground(Platform& platform) {
    const pid_t copy = fork();
    if (copy < 0)
        throw Error("POSIX", errno, "fork: " + std::generic_category().message(errno));
    // _exit leaves the connections open, which the child uses.
    if (copy > 0)
        _exit(0);
    detach();
    while (platform.servesContents())
        platform.eventLoop().runOnce(EventLoop::unlimited);
    _exit(0);
}

} // namespace tavel
