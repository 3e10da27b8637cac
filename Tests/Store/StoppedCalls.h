#pragma once

#include <sys/ptrace.h>
#include <sys/types.h>
#include <sys/wait.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace tavel {

/// Stops a child process before and after each of its system calls (ptrace). The child goes on by itself when
/// this object goes. One thread only.
class StoppedCalls {
public:
    /// The child may wait in a system call, which it begins again.
    explicit StoppedCalls(pid_t child) : child_(child) {
        check(ptrace(PTRACE_SEIZE, child_, nullptr, PTRACE_O_TRACESYSGOOD) == 0, "PTRACE_SEIZE");
        check(ptrace(PTRACE_INTERRUPT, child_, nullptr, nullptr) == 0, "PTRACE_INTERRUPT");
        awaitStop();
    }

    ~StoppedCalls() { ptrace(PTRACE_DETACH, child_, nullptr, nullptr); }
    StoppedCalls(const StoppedCalls&) = delete;
    StoppedCalls& operator=(const StoppedCalls&) = delete;

    /// Lets the child run until it stops again. It must not end before that.
    void toTheNext() {
        check(ptrace(PTRACE_SYSCALL, child_, nullptr, nullptr) == 0, "PTRACE_SYSCALL");
        awaitStop();
    }

private:
    static void check(bool isDone, const char* what) {
        if (!isDone)
            throw std::system_error(errno, std::generic_category(), what);
    }

    void awaitStop() const {
        int status = 0;
        check(waitpid(child_, &status, __WALL) == child_, "waitpid");
        if (!WIFSTOPPED(status))
            throw std::runtime_error("The child has ended.");
    }

    pid_t child_;
};

} // namespace tavel
