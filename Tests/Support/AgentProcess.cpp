#include "Tests/Support/AgentProcess.h"

#include "Tests/Support/WaitUntil.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

using namespace std::chrono_literals;

void check(int error, const char* what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

void checkErrno(bool succeeded, const char* what) {
    check(succeeded ? 0 : errno, what);
}

void setNonBlocking(int descriptor) {
    checkErrno(fcntl(descriptor, F_SETFL, fcntl(descriptor, F_GETFL) | O_NONBLOCK) == 0, "fcntl");
}

int bytesInPipe(int descriptor) {
    int bytes = 0;
    checkErrno(ioctl(descriptor, FIONREAD, &bytes) == 0, "ioctl");
    return bytes;
}

/// The strings as execve takes them. They must outlive the result.
std::vector<char*> pointersTo(std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (std::string& string : strings)
        pointers.push_back(string.data());
    pointers.push_back(nullptr);
    return pointers;
}

std::vector<std::string>
changedEnvironment(const std::map<std::string, std::optional<std::string>>& changes) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (!changes.contains(text.substr(0, text.find('='))))
            variables.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (value)
            variables.push_back(name + "=" + *value);
    }
    return variables;
}

/// Whether each thread of the process sleeps in a system call, as /proc tells: the letter behind the name.
bool isAsleep(pid_t process) {
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream file(thread.path() / "stat");
        const std::string status{std::istreambuf_iterator<char>(file), {}};
        const std::size_t name = status.rfind(") ");
        if (name == std::string::npos || status.substr(name + 2, 1) != "S")
            return false;
    }
    return true;
}

} // namespace

AgentProcess::Descriptor& AgentProcess::Descriptor::operator=(Descriptor&& other) noexcept {
    close();
    number_ = other.release();
    return *this;
}

void AgentProcess::Descriptor::close() {
    if (isOpen())
        ::close(release());
}

int AgentProcess::Descriptor::release() {
    return std::exchange(number_, -1);
}

AgentProcess::Pipe AgentProcess::makePipe() {
    // Closed in other children: an agent would not see the end of an input that another one holds open.
    int ends[2] = {};
    checkErrno(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

AgentProcess::AgentProcess(const Options& options) : errors_(std::tmpfile()) {
    checkErrno(errors_ != nullptr, "tmpfile");
    std::signal(SIGPIPE, SIG_IGN); // an agent that is gone must not take the tests along
    Pipe input = makePipe();
    Pipe output = makePipe();
    setNonBlocking(input.writeEnd.number());
    if (options.nonBlockingPipes) {
        setNonBlocking(input.readEnd.number());
        setNonBlocking(output.writeEnd.number());
    }
    if (options.outputPipeBytes)
        checkErrno(fcntl(output.readEnd.number(), F_SETPIPE_SZ, *options.outputPipeBytes) >= 0,
                   "F_SETPIPE_SZ");
    spawn(options, input.readEnd.number(), output.writeEnd.number());
    input_ = std::move(input.writeEnd);
    output_ = std::move(output.readEnd);
}

void AgentProcess::spawn(const Options& options, int input, int output) {
    const std::string program = TAVEL_AGENT_PROGRAM;
    std::vector<std::string> arguments = options.launcher;
    arguments.push_back(options.programName.value_or(program));
    arguments.insert(arguments.end(), options.arguments.begin(), options.arguments.end());
    std::vector<std::string> environment = changedEnvironment(options.environment);

    posix_spawn_file_actions_t actions;
    check(posix_spawn_file_actions_init(&actions), "posix_spawn_file_actions_init");
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, output, STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, fileno(errors_.get()), STDERR_FILENO);
    for (const int descriptor : options.closedDescriptors)
        posix_spawn_file_actions_addclose(&actions, descriptor);

    posix_spawnattr_t attributes;
    check(posix_spawnattr_init(&attributes), "posix_spawnattr_init");
    sigset_t defaults;
    sigemptyset(&defaults);
    sigaddset(&defaults, SIGPIPE); // it is ignored here, which a child would inherit
    posix_spawnattr_setsigdefault(&attributes, &defaults);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF);

    const std::string& file = options.launcher.empty() ? program : options.launcher.front();
    const int error = posix_spawn(&process_, file.c_str(), &actions, &attributes,
                                  pointersTo(arguments).data(), pointersTo(environment).data());
    posix_spawnattr_destroy(&attributes);
    posix_spawn_file_actions_destroy(&actions);
    check(error, "posix_spawn");
}

AgentProcess::~AgentProcess() {
    if (!exited_) {
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    EXPECT_EQ(errorOutput(), "") << "The agent wrote to standard error.";
}

void AgentProcess::send(std::string_view bytes) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    while (!bytes.empty()) {
        const ssize_t written = write(input_.number(), bytes.data(), bytes.size());
        if (written >= 0) {
            bytes.remove_prefix(static_cast<std::size_t>(written));
            continue;
        }
        if (errno == EPIPE)
            return;
        checkErrno(errno == EAGAIN || errno == EINTR, "write");
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("The agent does not read its input.");
        pollfd ends[] = {{input_.number(), POLLOUT, 0}, {endOfOutput_ ? -1 : output_.number(), POLLIN, 0}};
        poll(ends, 2, 100);
        if ((ends[1].revents & POLLIN) != 0)
            readOutput(0ms);
    }
}

void AgentProcess::sendByteByByte(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        send(bytes.substr(i, 1));
        waitUntil([this] { return bytesInPipe(input_.number()) == 0; }, deadline);
    }
}

std::optional<std::string> AgentProcess::nextLine() {
    const auto end = std::chrono::steady_clock::now() + deadline;
    for (;;) {
        if (auto line = takeLine())
            return line;
        if (endOfOutput_) {
            if (!received_.empty())
                throw std::runtime_error("The agent's output ends within a line: " + received_);
            return std::nullopt;
        }
        if (!readOutput(100ms) && std::chrono::steady_clock::now() > end)
            throw std::runtime_error("The agent says nothing.");
    }
}

nlohmann::json AgentProcess::nextMessage() {
    const auto line = nextLine();
    if (!line)
        throw std::runtime_error("The agent's output has ended.");
    return nlohmann::json::parse(*line);
}

std::vector<nlohmann::json> AgentProcess::remainingMessages() {
    std::vector<nlohmann::json> messages;
    while (const auto line = nextLine())
        messages.push_back(nlohmann::json::parse(*line));
    return messages;
}

/// Returns false at the time-out. The end of the output counts as output.
bool AgentProcess::readOutput(std::chrono::milliseconds timeOut) {
    pollfd readable{output_.number(), POLLIN, 0};
    if (poll(&readable, 1, static_cast<int>(timeOut.count())) <= 0)
        return false;
    const std::size_t before = received_.size();
    received_.resize(before + readSize_);
    const ssize_t count = read(output_.number(), received_.data() + before, readSize_);
    received_.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    checkErrno(count >= 0, "read");
    endOfOutput_ = count == 0;
    return true;
}

std::optional<std::string> AgentProcess::takeLine() {
    const std::size_t feed = received_.find('\n', scanned_);
    if (feed == std::string::npos) {
        scanned_ = received_.size();
        return std::nullopt;
    }
    std::string line = received_.substr(0, feed);
    received_.erase(0, feed + 1);
    scanned_ = 0;
    return line;
}

int AgentProcess::unreadOutputBytes() const {
    return bytesInPipe(output_.number());
}

void AgentProcess::waitUntilIdle() {
    // Twice, because a thread that was looked at may have been woken by one that was looked at later.
    const auto isIdle = [this] { return bytesInPipe(input_.number()) == 0 && isAsleep(process_); };
    waitUntil(
        [&] {
            const bool first = isIdle();
            return first && isIdle();
        },
        deadline);
}

int AgentProcess::waitForExit() {
    int status = 0;
    waitUntil(
        [&] {
            // A full pipe would keep the agent from its end.
            while (output_.isOpen() && !endOfOutput_ && readOutput(0ms))
                ;
            const pid_t ended = waitpid(process_, &status, WNOHANG);
            checkErrno(ended >= 0, "waitpid");
            return ended == process_;
        },
        deadline);
    exited_ = true;
    return status;
}

void AgentProcess::signal(int number) const {
    checkErrno(kill(process_, number) == 0, "kill");
}

std::string AgentProcess::errorOutput() const {
    std::string text(1024, '\0'); // the beginning tells enough
    const ssize_t count = pread(fileno(errors_.get()), text.data(), text.size(), 0);
    text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    return text;
}

} // namespace tavel
