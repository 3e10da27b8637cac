#include "Linux/Images/Program/ProcessLock.h"

#include "Linux/Images/Program/FileRuleset.h"
#include "Linux/Images/Program/SystemCallFilter.h"

#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <climits>
#include <csignal>

namespace tavel {
namespace {

void setLimit(__rlimit_resource resource, rlim_t value) {
    const rlimit limit{value, value};
    setrlimit(resource, &limit); // lowering a limit needs no privilege; fails if it is lower already
}

void setLimits() {
#ifdef TAVEL_SANITIZED
    constexpr rlim_t descriptors = 16; // see filterSystemCalls
#else
    constexpr rlim_t descriptors = 0;
    // Several times what the largest pictures take. Sanitizers reserve far more for themselves.
    constexpr rlim_t addresses = rlim_t{4} * 1024 * 1024 * 1024;
    setLimit(RLIMIT_AS, addresses);
#endif
    // The agent's deadline comes first, unless the agent itself is stopped. Many threads may share this time.
    constexpr rlim_t processorSeconds = 60;
    setLimit(RLIMIT_CPU, processorSeconds);
    setLimit(RLIMIT_FSIZE, 0);
    setLimit(RLIMIT_CORE, 0);
    setLimit(RLIMIT_NOFILE, descriptors);
}

} // namespace

void lockProcess() {
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0); // without it an ordinary user may not lock a process
    prctl(PR_SET_DUMPABLE, 0, 0, 0, 0);
    forbidFilesAndNetwork();
    close_range(0, UINT_MAX, 0);
    setLimits();
    filterSystemCalls();
}

} // namespace tavel
