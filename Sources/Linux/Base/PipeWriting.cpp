#include "Linux/Base/PipeWriting.h"

#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <ctime>

namespace tavel {

ssize_t writeWithoutSignal(int descriptor, const char* bytes, std::size_t size) {
    sigset_t brokenPipe;
    sigemptyset(&brokenPipe);
    sigaddset(&brokenPipe, SIGPIPE);
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    sigset_t before;
    pthread_sigmask(SIG_BLOCK, &brokenPipe, &before);
    const ssize_t written = write(descriptor, bytes, size);
    const int error = errno;
    // The signal is the writing thread's, and waits for this. One that has waited before is somebody else's.
    if (written < 0 && error == EPIPE && sigismember(&pending, SIGPIPE) == 0) {
        constexpr timespec now{};
        while (sigtimedwait(&brokenPipe, nullptr, &now) < 0 && errno == EINTR)
            continue;
    }
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
    errno = error;
    return written;
}

} // namespace tavel
