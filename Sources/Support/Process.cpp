#include "Support/Process.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace tavel {

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

} // namespace tavel
