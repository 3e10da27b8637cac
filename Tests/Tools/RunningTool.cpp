#include "Tests/Tools/RunningTool.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

using Clock = std::chrono::steady_clock;

/// Only a program that hangs takes this long.
constexpr std::chrono::seconds longestWait{60};
constexpr int pollMilliseconds = 100;

void require(bool done, const char* what) {
    if (!done)
        throw std::system_error(errno, std::generic_category(), what);
}

std::vector<char*> pointersTo(const std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str())); // execve does not write to them
    pointers.push_back(nullptr);
    return pointers;
}

/// Runs in the new process: only async-signal-safe calls.
[[noreturn]] void execute(const World& world, char* const* arguments, char* const* environment) {
    if (chdir(world.directory().c_str()) == 0)
        execve(arguments[0], arguments, environment);
    _exit(127);
}

void closeDescriptor(int& descriptor) {
    if (descriptor >= 0)
        close(std::exchange(descriptor, -1));
}

} // namespace

RunningTool::RunningTool(const World& world, const std::vector<std::string>& arguments, Place place) {
    std::signal(SIGPIPE, SIG_IGN); // a program may end before it has read everything
    if (place == Place::terminal)
        startOnTerminal(world, arguments);
    else
        startOnPipes(world, arguments);
}

RunningTool::~RunningTool() {
    if (process_ != 0) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    closeDescriptor(input_);
    closeDescriptor(output_);
    closeDescriptor(errors_);
}

void RunningTool::startOnPipes(const World& world, const std::vector<std::string>& arguments) {
    std::array<int, 2> input{};
    std::array<int, 2> output{};
    std::array<int, 2> errors{};
    for (auto* const ends : {&input, &output, &errors})
        require(pipe2(ends->data(), O_CLOEXEC) == 0, "pipe2");
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(world.environment());
    process_ = fork();
    require(process_ >= 0, "fork");
    if (process_ == 0) {
        dup2(input[0], STDIN_FILENO);
        dup2(output[1], STDOUT_FILENO);
        dup2(errors[1], STDERR_FILENO);
        std::signal(SIGPIPE, SIG_DFL);
        execute(world, argumentPointers.data(), environmentPointers.data());
    }
    close(input[0]);
    close(output[1]);
    close(errors[1]);
    input_ = input[1];
    output_ = output[0];
    errors_ = errors[0];
    require(fcntl(input_, F_SETFL, O_NONBLOCK) == 0, "fcntl");
}

void RunningTool::startOnTerminal(const World& world, const std::vector<std::string>& arguments) {
    onTerminal_ = true;
    const winsize size{terminalRows, terminalColumns, 0, 0};
    const std::vector<char*> argumentPointers = pointersTo(arguments);
    const std::vector<char*> environmentPointers = pointersTo(world.environment());
    process_ = forkpty(&output_, nullptr, nullptr, &size);
    require(process_ >= 0, "forkpty");
    if (process_ == 0) {
        std::signal(SIGPIPE, SIG_DFL);
        execute(world, argumentPointers.data(), environmentPointers.data());
    }
    require(fcntl(output_, F_SETFL, O_NONBLOCK) == 0, "fcntl");
    require(fcntl(output_, F_SETFD, FD_CLOEXEC) == 0, "fcntl");
}

void RunningTool::send(std::string_view input) {
    pendingInput_.append(input);
    writeInput();
}

void RunningTool::closeInput() {
    closing_ = true;
    writeInput();
}

void RunningTool::sendSignal(int number) const {
    kill(process_, number);
}

void RunningTool::writeInput() {
    const int descriptor = onTerminal_ ? output_ : input_;
    while (descriptor >= 0 && !pendingInput_.empty()) {
        const ssize_t written = write(descriptor, pendingInput_.data(), pendingInput_.size());
        if (written < 0 && errno == EAGAIN)
            return;
        if (written < 0 && errno != EINTR) {
            pendingInput_.clear(); // the program has closed its input
            break;
        }
        if (written > 0)
            pendingInput_.erase(0, static_cast<std::size_t>(written));
    }
    if (closing_)
        closeDescriptor(input_);
}

void RunningTool::readInto(std::string& target, int& descriptor) {
    std::array<char, 65536> buffer;
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count > 0)
        target.append(buffer.data(), static_cast<std::size_t>(count));
    else if (count == 0 ||
             (errno != EINTR && errno != EAGAIN)) // EIO: no process has the terminal open any more
        closeDescriptor(descriptor);
}

/// Transfers bytes once in each direction. False at the end of all output.
bool RunningTool::exchange() {
    const short wanted = pendingInput_.empty() ? 0 : POLLOUT;
    std::array<pollfd, 3> descriptors{{{wanted != 0 ? input_ : -1, wanted, 0},
                                       {output_, static_cast<short>(POLLIN | (onTerminal_ ? wanted : 0)), 0},
                                       {errors_, POLLIN, 0}}};
    require(poll(descriptors.data(), descriptors.size(), pollMilliseconds) >= 0 || errno == EINTR, "poll");
    if (wanted != 0)
        writeInput();
    if ((descriptors[1].revents & ~POLLOUT) != 0)
        readInto(outputText_, output_);
    if (descriptors[2].revents != 0)
        readInto(errorText_, errors_);
    return output_ >= 0 || errors_ >= 0;
}

std::string RunningTool::waitForOutput(std::string_view text) {
    const auto deadline = Clock::now() + longestWait;
    for (;;) {
        const std::size_t found = outputText_.find(text, seen_);
        if (found != std::string::npos) {
            const std::size_t begin = std::exchange(seen_, found + text.size());
            return outputText_.substr(begin, seen_ - begin);
        }
        if (output_ < 0 || Clock::now() > deadline)
            giveUp("waited in vain for \"" + std::string(text) + "\"");
        exchange();
    }
}

ToolResult RunningTool::finish() {
    const auto deadline = Clock::now() + longestWait;
    while (exchange()) {
        if (Clock::now() > deadline)
            giveUp("the program does not end");
    }
    int status = 0;
    while (waitpid(process_, &status, WNOHANG) == 0) {
        if (Clock::now() > deadline)
            giveUp("the program closed its output but does not end");
        poll(nullptr, 0, 1);
    }
    process_ = 0;
    return {WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status), outputText_, errorText_};
}

void RunningTool::giveUp(const std::string& what) const {
    throw std::runtime_error(what + "; output so far:\n" + outputText_ + "\nerrors so far:\n" + errorText_);
}

ToolResult runTool(const World& world, const std::vector<std::string>& arguments, std::string_view input) {
    RunningTool tool(world, arguments);
    tool.send(input);
    tool.closeInput();
    return tool.finish();
}

} // namespace tavel
