#include "Tests/Wayland/OwnerTransfer.h"

#include <poll.h>
#include <pthread.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <climits>
#include <csignal>
#include <ctime>
#include <thread>

namespace tavel {

namespace {

constexpr std::chrono::microseconds pollInterval{200};

/// SIGPIPE of this thread is not raised while this exists.
class WithoutPipeSignal {
public:
    WithoutPipeSignal() {
        sigemptyset(&signal_);
        sigaddset(&signal_, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &signal_, &before_);
    }
    ~WithoutPipeSignal() {
        const timespec noTime{};
        while (sigtimedwait(&signal_, nullptr, &noTime) < 0 && errno == EINTR) {
        }
        pthread_sigmask(SIG_SETMASK, &before_, nullptr);
    }
    WithoutPipeSignal(const WithoutPipeSignal&) = delete;
    WithoutPipeSignal& operator=(const WithoutPipeSignal&) = delete;

private:
    sigset_t signal_{};
    sigset_t before_{};
};

} // namespace

/// Deliberate: the descriptor keeps its mode, which the reader chose. A pipe that is writable takes PIPE_BUF
/// bytes without blocking.
bool OwnerTransfer::write(std::string_view bytes) {
    const std::lock_guard lock(mutex_);
    const WithoutPipeSignal withoutPipeSignal;
    while (!bytes.empty()) {
        if (!writeEnd_ || !awaitReadiness(POLLOUT))
            return false;
        const ssize_t count =
            ::write(writeEnd_->number(), bytes.data(), std::min<std::size_t>(bytes.size(), PIPE_BUF));
        if (count >= 0)
            bytes.remove_prefix(static_cast<std::size_t>(count));
        else if (errno != EINTR && errno != EAGAIN)
            return false;
    }
    return true;
}

bool OwnerTransfer::awaitReading() {
    const std::lock_guard lock(mutex_);
    while (writeEnd_) {
        int unread = 0;
        if (ioctl(writeEnd_->number(), FIONREAD, &unread) == 0 && unread == 0)
            return true;
        std::array<pollfd, 2> ready{{{writeEnd_->number(), 0, 0}, {end_->number(), POLLIN, 0}}};
        if (poll(ready.data(), ready.size(), 0) > 0)
            return false;
        std::this_thread::sleep_for(pollInterval);
    }
    return false;
}

bool OwnerTransfer::awaitReaderEnd() {
    const std::lock_guard lock(mutex_);
    return !writeEnd_ || awaitReadiness(0);
}

void OwnerTransfer::close() {
    const std::lock_guard lock(mutex_);
    writeEnd_.reset();
}

/// Also returns for a reader that is gone. False if the owner is ending.
bool OwnerTransfer::awaitReadiness(short events) const {
    std::array<pollfd, 2> ready{{{writeEnd_->number(), events, 0}, {end_->number(), POLLIN, 0}}};
    while (poll(ready.data(), ready.size(), -1) < 0 && errno == EINTR) {
    }
    return ready[1].revents == 0;
}

} // namespace tavel
