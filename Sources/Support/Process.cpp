#include "Support/Process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

#ifdef __linux__
#include <sys/prctl.h>
#endif
#ifdef TAVEL_SANITIZED
#include <sanitizer/common_interface_defs.h>
#endif

namespace tavel {

namespace {

/// Moves a standard descriptor above the three and puts the replacement in its place. Returns the new number,
/// or the old one if the system has no descriptor left.
int movedTo(int replacement, int descriptor) {
    const int moved = fcntl(descriptor, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (moved < 0)
        return descriptor;
    dup2(replacement, descriptor);
    return moved;
}

sigset_t brokenPipeSignal() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGPIPE);
    return signals;
}

} // namespace

std::int32_t parentProcessIdentifier() {
    return getppid();
}

void lowerSchedulingPriority() {
    // Raising the nice value needs no privilege. On failure the agent runs at normal priority.
    static_cast<void>(setpriority(PRIO_PROCESS, 0, 10));
}

void reserveStandardDescriptors() {
    // open(2) returns the lowest free number, so repeated calls fill the gaps.
    int descriptor = open("/dev/null", O_RDWR);
    while (descriptor >= 0 && descriptor <= STDERR_FILENO)
        descriptor = open("/dev/null", O_RDWR);
    if (descriptor > STDERR_FILENO)
        close(descriptor);
}

void disableCoreDumps() {
    constexpr rlimit none{0, 0};
    static_cast<void>(setrlimit(RLIMIT_CORE, &none)); // lowering a limit needs no privilege
}

StandardPipes takeStandardPipes() {
    reserveStandardDescriptors();
    const int nullDevice = open("/dev/null", O_RDWR | O_CLOEXEC);
    const StandardPipes pipes{movedTo(nullDevice, STDIN_FILENO), movedTo(nullDevice, STDOUT_FILENO)};
#ifdef TAVEL_SANITIZED
    // A sanitizer's reports still have to reach whoever runs the tests.
    __sanitizer_set_report_fd(reinterpret_cast<void*>(std::intptr_t{movedTo(nullDevice, STDERR_FILENO)}));
#else
    dup2(nullDevice, STDERR_FILENO);
#endif
    close(nullDevice);
    return pipes;
}

void refuseNewPrivileges() {
#ifdef __linux__
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0); // cannot fail with these arguments (prctl(2))
#endif
}

void blockBrokenPipeSignal() {
    const sigset_t brokenPipe = brokenPipeSignal();
    pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
}

void endByBrokenPipeSignal() {
    std::signal(SIGPIPE, SIG_DFL);
    const sigset_t brokenPipe = brokenPipeSignal();
    pthread_sigmask(SIG_UNBLOCK, &brokenPipe, nullptr); // ends the process if a write left it pending
    std::raise(SIGPIPE);
    std::abort(); // only a debugger can have taken the signal away
}

} // namespace tavel
