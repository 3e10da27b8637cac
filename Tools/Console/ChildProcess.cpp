#include "Console/ChildProcess.h"

#include "Support/Error.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <system_error>
#include <utility>

// POSIX has the program declare it, though some systems do it themselves.
extern char** environ; // NOLINT(readability-redundant-declaration)

namespace tavel {

namespace {

constexpr std::size_t readBytes = std::size_t{64} * 1024;

[[noreturn]] void fail(const std::string& what, int code) {
    throw Error("POSIX", code, what + ": " + std::generic_category().message(code));
}

/// Closes both ends unless they were taken. Started programs inherit neither.
class Pipe {
public:
    Pipe() {
        GError* error = nullptr;
        if (g_unix_open_pipe(ends_.data(), FD_CLOEXEC, &error) == FALSE) {
            const std::string description = error->message;
            g_error_free(error);
            throw Error("POSIX", 0, "Cannot make a pipe: " + description);
        }
    }
    ~Pipe() {
        closeEnd(ends_[0]);
        closeEnd(ends_[1]);
    }
    Pipe(const Pipe&) = delete;
    Pipe& operator=(const Pipe&) = delete;

    int readEnd() const { return ends_[0]; }
    int writeEnd() const { return ends_[1]; }
    /// Both return the end in non-blocking mode; the other end stays blocking.
    int takeReadEnd() { return take(ends_[0]); }
    int takeWriteEnd() { return take(ends_[1]); }

private:
    static void closeEnd(int end) {
        if (end >= 0)
            close(end);
    }

    static int take(int& end) {
        if (g_unix_set_fd_nonblocking(end, TRUE, nullptr) == FALSE)
            fail("Cannot prepare a pipe", errno);
        return std::exchange(end, -1);
    }

    std::array<int, 2> ends_{-1, -1};
};

/// How the new process differs from this one.
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
        sigaddset(&signals, SIGPIPE);
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
    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, Handlers handlers)
    : handlers_(std::move(handlers)) {
    Pipe input;
    Pipe output;
    start(arguments, input.readEnd(), output.writeEnd());
    input_ = input.takeWriteEnd();
    output_ = output.takeReadEnd();
    outputWatch_ = Watch::readable(output_, [this] { static_cast<void>(readOutput()); });
    endWatch_ = Watch::processEnd(process_, [this](int status) { noteEnd(status); });
}

ChildProcess::~ChildProcess() {
    if (input_ >= 0)
        close(input_);
    if (output_ >= 0)
        close(output_);
    if (!isRunning())
        return;
    endWatch_ = {};
    kill(process_, SIGKILL);
    while (waitpid(process_, nullptr, 0) < 0 && errno == EINTR)
        continue;
}

void ChildProcess::start(const std::vector<std::string>& arguments, int input, int output) {
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (const std::string& argument : arguments)
        pointers.push_back(const_cast<char*>(argument.c_str())); // posix_spawn does not write to them
    pointers.push_back(nullptr);
    const SpawnSettings settings(input, output);
    const int error = posix_spawn(&process_, arguments.front().c_str(), settings.actions(),
                                  settings.attributes(), pointers.data(), environ);
    if (error != 0) {
        process_ = 0;
        fail("Cannot start " + arguments.front(), error);
    }
}

void ChildProcess::send(std::string bytes) {
    if (input_ < 0 || closing_)
        return;
    if (queue_.empty())
        queue_ = std::move(bytes);
    else
        queue_.append(bytes);
    writeQueue();
}

void ChildProcess::closeInput() {
    closing_ = true;
    writeQueue();
}

void ChildProcess::writeQueue() {
    while (input_ >= 0 && queueOffset_ < queue_.size()) {
        const ssize_t written = write(input_, queue_.data() + queueOffset_, queue_.size() - queueOffset_);
        if (written >= 0) {
            queueOffset_ += static_cast<std::size_t>(written);
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            if (!inputWatch_)
                inputWatch_ = Watch::writable(input_, [this] { writeQueue(); });
            return;
        } else if (errno != EINTR) {
            closing_ = true; // the program reads no more; its end is watched separately
            break;
        }
    }
    std::string().swap(queue_); // frees the memory, which clear() would keep
    queueOffset_ = 0;
    inputWatch_ = {};
    if (closing_ && input_ >= 0)
        close(std::exchange(input_, -1));
}

/// Hands over the output that is there. False if there was none.
bool ChildProcess::readOutput() {
    if (output_ < 0)
        return false;
    std::array<char, readBytes> buffer;
    const ssize_t count = read(output_, buffer.data(), buffer.size());
    if (count > 0) {
        handlers_.output({buffer.data(), static_cast<std::size_t>(count)});
        return true;
    }
    if (count < 0 && errno == EINTR)
        return true;
    if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
        outputWatch_ = {};
        close(std::exchange(output_, -1));
    }
    return false;
}

void ChildProcess::noteEnd(int status) {
    process_ = 0;
    endWatch_ = {};
    while (readOutput())
        continue;
    handlers_.ended(status);
}

void ChildProcess::sendSignal(int number) const {
    if (isRunning())
        kill(process_, number);
}

std::string describeEnd(int status) {
    if (WIFSIGNALED(status)) {
        const int number = WTERMSIG(status);
        return "signal " + std::to_string(number) + " (" + strsignal(number) + ")";
    }
    return "exit status " + std::to_string(WEXITSTATUS(status));
}

} // namespace tavel
