#include "Linux/Images/ImageProcess.h"

#include "Linux/Base/SpawnedProgram.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <limits>
#include <system_error>
#include <thread>

extern "C" {
#include <sys/pidfd.h> // glibc 2.36 declares its functions for C alone
}

namespace tavel {
namespace {

using Clock = ImageProcess::Clock;

/// How often a process is looked at that the system gives no descriptor for.
constexpr std::chrono::milliseconds pauseBetweenLooks{5};

/// Nothing of this process's environment but the directories of libraries: the program links the same ones.
/// Above all not LD_PRELOAD and what changes the ways of GLib and libvips.
constexpr std::array inherited{
    "LD_LIBRARY_PATH",
#ifdef TAVEL_SANITIZED
    "ASAN_OPTIONS",
    "TSAN_OPTIONS",
    "UBSAN_OPTIONS",
#endif
};

std::vector<std::string> environmentOfProgram() {
    std::vector<std::string> environment;
    for (const char* const name : inherited) {
        if (const char* const value = std::getenv(name))
            environment.push_back(std::string(name) + '=' + value);
    }
    return environment;
}

/// Rounded up, so that nobody looks again just before the deadline.
int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    return static_cast<int>(std::clamp<std::int64_t>(left, 0, std::numeric_limits<int>::max()));
}

bool becomesReadable(const Descriptor& descriptor, Clock::time_point deadline) {
    pollfd polled{descriptor.number(), POLLIN, 0};
    for (;;) {
        const int ready = poll(&polled, 1, millisecondsUntil(deadline));
        if (ready >= 0 || errno != EINTR)
            return ready > 0;
    }
}

} // namespace

ImageProcess::ImageProcess(const std::filesystem::path& program, const ImageRequest& request,
                           const Descriptor& picture, const Descriptor& answer) {
    const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    if (!null)
        throw std::system_error(errno, std::generic_category(), "/dev/null");
    std::vector<std::string> environment = environmentOfProgram();
    std::vector<char*> pointers;
    pointers.reserve(environment.size() + 1);
    for (std::string& variable : environment)
        pointers.push_back(variable.data());
    pointers.push_back(nullptr);
    const std::array descriptors{null.number(), null.number(), null.number(), picture.number(),
                                 answer.number()};
    static_assert(pictureDescriptor == 3 && answerDescriptor == 4);
    process_ = spawnProgram(program, argumentsFor(request), pointers.data(), descriptors);
}

ImageProcess::~ImageProcess() {
    if (isReaped_)
        return;
    kill(process_, SIGKILL); // not reaped yet, so the identifier is still the child's
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR) {
    }
}

std::optional<int> ImageProcess::exitStatus(Clock::time_point deadline) {
    if (!hasEndedAt(deadline) || !reap() || !status_ || !WIFEXITED(*status_))
        return std::nullopt;
    return WEXITSTATUS(*status_);
}

bool ImageProcess::hasEndedAt(Clock::time_point deadline) {
    const Descriptor handle(pidfd_open(process_, 0));
    if (handle)
        return becomesReadable(handle, deadline);
    while (!reap()) { // an old kernel, or no descriptor is left
        if (Clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(pauseBetweenLooks);
    }
    return true;
}

bool ImageProcess::reap() {
    if (isReaped_)
        return true;
    int status = 0;
    const pid_t ended = waitpid(process_, &status, WNOHANG);
    isReaped_ = ended != 0; // an error means that somebody else has reaped it
    if (ended == process_)
        status_ = status;
    return isReaped_;
}

} // namespace tavel
