#include "Pasteboard/Background.h"

#include "Support/Error.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <system_error>

namespace tavel {

namespace {

/// The loop wakes up by itself for whatever it serves.
constexpr std::chrono::hours longestWait{1};

/// Whoever reads the command's output to its end must not wait for the copy in the background, and no
/// directory may be kept from being unmounted.
void letGoOfSurroundings() {
    setsid();
    static_cast<void>(chdir("/"));
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(nothing, standard);
}

} // namespace

void serveInBackground(Platform& platform) {
    const pid_t copy = fork();
    if (copy < 0)
        throw Error("POSIX", errno, "fork: " + std::generic_category().message(errno));
    // Without leaving the connections: the copy uses the same ones.
    if (copy > 0)
        _exit(0);
    letGoOfSurroundings();
    while (platform.servesContents())
        platform.eventLoop().runOnce(longestWait);
    _exit(0);
}

} // namespace tavel
