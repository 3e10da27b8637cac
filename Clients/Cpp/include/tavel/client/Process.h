#pragma once

#include "tavel/client/Messages.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#ifdef __APPLE__
#include <crt_externs.h>
#include <sys/event.h>
#else
#include <sys/syscall.h>
#endif

/// The agent as a child process. Applications need nothing of this file.
namespace tavel::client::detail {

/// Closes its descriptor.
class Descriptor {
public:
    Descriptor() = default;
    explicit Descriptor(int number) : number_(number) {}
    ~Descriptor() { close(); }
    Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(number_, other.number_);
        other.close();
        return *this;
    }

    int number() const { return number_; } // -1 once closed
    bool isOpen() const { return number_ >= 0; }
    void close() {
        if (isOpen())
            ::close(std::exchange(number_, -1));
    }

private:
    int number_ = -1;
};

[[noreturn]] inline void throwSystemError(const char* what) {
    throw std::system_error(errno, std::generic_category(), what);
}

inline void setNonBlocking(const Descriptor& descriptor) {
    if (fcntl(descriptor.number(), F_SETFL, O_NONBLOCK) != 0)
        throwSystemError("fcntl");
}

struct Pipe {
    Descriptor readEnd;
    Descriptor writeEnd;
};

/// Programs that this process starts inherit neither end. Neither has the number of a standard descriptor,
/// even where this process has closed those.
inline Pipe makePipe() {
    std::array<int, 2> ends{};
#ifdef __APPLE__ // has no pipe2
    if (pipe(ends.data()) != 0)
#else
    if (pipe2(ends.data(), O_CLOEXEC) != 0)
#endif
        throwSystemError("pipe");
    const Descriptor readEnd(ends[0]);
    const Descriptor writeEnd(ends[1]);
    Pipe made{Descriptor(fcntl(readEnd.number(), F_DUPFD_CLOEXEC, 3)),
              Descriptor(fcntl(writeEnd.number(), F_DUPFD_CLOEXEC, 3))};
    if (!made.readEnd.isOpen() || !made.writeEnd.isOpen())
        throwSystemError("fcntl");
    return made;
}

/// Wakes a thread that waits in poll.
class WakeUp {
public:
    WakeUp() : pipe_(makePipe()) {
        setNonBlocking(pipe_.readEnd);
        setNonBlocking(pipe_.writeEnd);
    }

    /// Readable from `wake` on until `clear`.
    int descriptor() const { return pipe_.readEnd.number(); }

    void wake() const {
        const char byte = 0;
        // A full pipe wakes as well.
        static_cast<void>(!write(pipe_.writeEnd.number(), &byte, 1));
    }

    void clear() const {
        std::array<char, 64> bytes{};
        while (read(pipe_.readEnd.number(), bytes.data(), bytes.size()) > 0)
            continue;
    }

private:
    Pipe pipe_;
};

/// How the new process differs from this one: its standard input and output, the system's default for every
/// signal, and a process group of its own, so that Ctrl-C in a terminal does not reach it.
class SpawnSettings {
public:
    SpawnSettings(int input, int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_adddup2(&actions_, input, STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);

        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        sigfillset(&signals);
        sigdelset(&signals, SIGKILL);
        sigdelset(&signals, SIGSTOP);
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setpgroup(&attributes_, 0);
        posix_spawnattr_setflags(
            &attributes_,
            static_cast<short>(POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP));
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    posix_spawn_file_actions_t actions_{};
    posix_spawnattr_t attributes_{};
};

/// What posix_spawn takes instead of a vector of strings. Valid as long as the vector is unchanged.
inline std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& string : strings)
        pointers.push_back(const_cast<char*>(string.c_str())); // posix_spawn does not write to them
    pointers.push_back(nullptr);
    return pointers;
}

inline char** environmentOfThisProcess() {
#ifdef __APPLE__ // where a library cannot name the variable itself
    return *_NSGetEnviron();
#else
    return environ;
#endif
}

/// A child process with non-blocking pipes to its standard input and output; it shares standard error.
class Process {
public:
    /// Starts the program `arguments[0]`, a path. `environment` has the form "NAME=value"; without one, the
    /// program gets this process's. Throws AgentNotFound if the program cannot be started, and
    /// std::system_error if the system refuses descriptors.
    Process(const std::vector<std::string>& arguments,
            const std::optional<std::vector<std::string>>& environment) {
        Pipe input = makePipe();
        Pipe output = makePipe();
        setNonBlocking(input.writeEnd);
        setNonBlocking(output.readEnd);
#ifdef F_SETNOSIGPIPE // where the signal goes to the process, so that no thread can be spared by its mask
        fcntl(input.writeEnd.number(), F_SETNOSIGPIPE, 1);
#endif
        const SpawnSettings settings(input.readEnd.number(), output.writeEnd.number());
        std::vector<char*> variables;
        if (environment)
            variables = pointersTo(*environment);
        const int error = posix_spawn(&process_, arguments.front().c_str(), settings.actions(),
                                      settings.attributes(), pointersTo(arguments).data(),
                                      environment ? variables.data() : environmentOfThisProcess());
        if (error != 0)
            throw AgentNotFound(arguments.front() + ": " + std::generic_category().message(error));
        input_ = std::move(input.writeEnd);
        output_ = std::move(output.readEnd);
        end_ = watchEnd(process_);
    }

    /// Kills the program if it is still there.
    ~Process() {
        if (isOver_)
            return;
        signal(SIGKILL);
        pollfd end{end_.number(), POLLIN, 0};
        poll(&end, 1, 1000);
        noteEnd();
    }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t identifier() const { return process_; }
    Descriptor& input() { return input_; }
    Descriptor& output() { return output_; }

    /// Readable when the program has ended. Closed on a Linux before 5.3, which has nothing of the kind.
    const Descriptor& endDescriptor() const { return end_; }

    /// Returns whether the program has ended, without waiting. From then on there is no zombie.
    bool noteEnd() {
        if (isOver_)
            return true;
        int status = 0;
        const pid_t ended = waitpid(process_, &status, WNOHANG);
        if (ended == process_)
            waitStatus_ = status;
        isOver_ = ended == process_ || (ended < 0 && errno != EINTR);
        return isOver_;
    }

    /// The status of waitpid. Nothing if somebody else in this process has waited for the program.
    std::optional<int> waitStatus() const { return waitStatus_; }

    void signal(int number) const {
        if (!isOver_)
            kill(process_, number);
    }

private:
    static Descriptor watchEnd(pid_t process) {
#ifdef __APPLE__
        Descriptor queue(kqueue());
        struct kevent change {};
        EV_SET(&change, static_cast<uintptr_t>(process), EVFILT_PROC, EV_ADD, NOTE_EXIT, 0, nullptr);
        if (!queue.isOpen() || kevent(queue.number(), &change, 1, nullptr, 0, nullptr) != 0)
            return {};
        fcntl(queue.number(), F_SETFD, FD_CLOEXEC);
        return queue;
#else
        return Descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0))); // closed on exec
#endif
    }

    pid_t process_ = 0;
    Descriptor input_;
    Descriptor output_;
    Descriptor end_;
    bool isOver_ = false;
    std::optional<int> waitStatus_;
};

} // namespace tavel::client::detail
