#include "Tests/Store/ChildProcess.h"

#include "Support/Files.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

constexpr int deadlineMilliseconds = 60'000;

using Pipe = std::array<int, 2>;

Pipe makePipe() {
    Pipe ends{};
    if (pipe(ends.data()) != 0)
        throw std::system_error(errno, std::generic_category(), "pipe");
    // Tests start children one after the other from one thread: none starts before the flag is set.
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    return ends;
}

} // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& commandLine) {
    const Pipe input = makePipe();
    const Pipe output = makePipe();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input[0], STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output[1], STDOUT_FILENO);
    std::vector<char*> arguments;
    arguments.reserve(commandLine.size() + 1);
    for (const std::string& argument : commandLine)
        arguments.push_back(const_cast<char*>(argument.c_str())); // POSIX: they are not changed
    arguments.push_back(nullptr);
    const int error = posix_spawn(&process_, arguments[0], &actions, nullptr, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(input[0]);
    close(output[1]);
    input_ = input[1];
    output_ = output[0];
    if (error != 0) {
        process_ = -1;
        closeInput();
        close(output_);
        throw std::system_error(error, std::generic_category(), commandLine.front());
    }
}

ChildProcess::~ChildProcess() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    closeInput();
    close(output_);
}

std::optional<std::string> ChildProcess::nextLine() {
    for (;;) {
        const std::size_t lineFeed = received_.find('\n');
        if (lineFeed != std::string::npos) {
            std::string line = received_.substr(0, lineFeed);
            received_.erase(0, lineFeed + 1);
            return line;
        }
        pollfd readable{output_, POLLIN, 0};
        if (poll(&readable, 1, deadlineMilliseconds) == 0)
            throw std::runtime_error("The child printed nothing for too long.");
        std::array<char, 256> buffer{};
        const ssize_t size = read(output_, buffer.data(), buffer.size());
        if (size <= 0)
            return std::nullopt;
        received_.append(buffer.data(), static_cast<std::size_t>(size));
    }
}

void ChildProcess::sendLine(const std::string& line) const {
    if (!writeAll(input_, line + '\n'))
        throw std::system_error(errno, std::generic_category(), "The child cannot be written to");
}

void ChildProcess::closeInput() {
    if (input_ >= 0)
        close(std::exchange(input_, -1));
}

void ChildProcess::kill() {
    ::kill(process_, SIGKILL);
    waitForExit();
}

int ChildProcess::waitForExit() {
    closeInput();
    while (nextLine()) {
        // The child alone holds the pipe, so its output ends with the child.
    }
    int status = 0;
    if (waitpid(std::exchange(process_, -1), &status, 0) < 0)
        throw std::system_error(errno, std::generic_category(), "waitpid");
    return status;
}

} // namespace tavel
