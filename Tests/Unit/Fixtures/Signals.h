#pragma once

#include <cerrno>
#include <csignal>
#include <system_error>

namespace tavel {

/// Installs a signal handler without SA_RESTART, so that the signal interrupts blocking calls, and puts the
/// former one back at the end.
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

} // namespace tavel
