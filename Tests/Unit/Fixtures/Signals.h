#pragma once

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <system_error>
#include <thread>

namespace tavel {

/// Handles a signal without SA_RESTART, so that it interrupts blocking calls, and puts the former handler
/// back at the end.
class SignalHandler {
public:
    SignalHandler(int signal, void (*handler)(int)) : signal_(signal) {
        struct sigaction action {};
        action.sa_handler = handler;
        if (sigaction(signal, &action, &former_) != 0)
            throw std::system_error(errno, std::generic_category(), "sigaction");
    }

    ~SignalHandler() { sigaction(signal_, &former_, nullptr); }

    SignalHandler(const SignalHandler&) = delete;
    SignalHandler& operator=(const SignalHandler&) = delete;

private:
    int signal_;
    struct sigaction former_ {};
};

/// Interrupts a thread's blocking calls by signals. Has to outlive the thread. One at a time.
class Interruptions {
public:
    Interruptions() : handler_(SIGUSR1, [](int) { ++handled; }) { handled = 0; }

    /// Until the thread has handled so many signals, or is done.
    static void interrupt(std::thread& thread, int times, const std::atomic<bool>& done) {
        while (handled < times && !done) {
            // Sent again where none was handled: ThreadSanitizer keeps a signal back that comes just before a
            // blocking call, and the call then waits with it.
            pthread_kill(thread.native_handle(), SIGUSR1);
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
    }

    static int count() { return handled; }

private:
    static inline std::atomic<int> handled = 0;

    SignalHandler handler_;
};

} // namespace tavel
