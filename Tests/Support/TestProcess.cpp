#include "Tests/Support/TestProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <system_error>

namespace tavel {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds pollPeriod = 100ms;

void check(int error, const char* what) {
    if (error != 0)
        throw std::system_error(error, std::generic_category(), what);
}

void checkErrno(bool succeeded, const char* what) {
    check(succeeded ? 0 : errno, what);
}

/// The strings as execve takes them. They must outlive the result.
std::vector<char*> pointersTo(const std::vector<std::string>& strings) {
    std::vector<char*> pointers;
    pointers.reserve(strings.size() + 1);
    for (const std::string& string : strings)
        pointers.push_back(const_cast<char*>(string.c_str())); // execve does not write to them
    pointers.push_back(nullptr);
    return pointers;
}

TestProcess::Options optionsFor(const std::vector<std::string>& commandLine) {
    TestProcess::Options options;
    options.program = commandLine.front();
    options.arguments = commandLine;
    return options;
}

} // namespace

/// What the new process does before it becomes the program.
class TestProcess::SpawnActions {
public:
    SpawnActions() {
        check(posix_spawn_file_actions_init(&actions_), "posix_spawn_file_actions_init");
        const int error = posix_spawnattr_init(&attributes_);
        if (error != 0)
            posix_spawn_file_actions_destroy(&actions_);
        check(error, "posix_spawnattr_init");
        sigset_t defaults;
        sigemptyset(&defaults);
        sigaddset(&defaults, SIGPIPE); // it is ignored here, which a child would inherit
        posix_spawnattr_setsigdefault(&attributes_, &defaults);
        setFlags(POSIX_SPAWN_SETSIGDEF);
    }
    ~SpawnActions() {
        posix_spawnattr_destroy(&attributes_);
        posix_spawn_file_actions_destroy(&actions_);
    }
    SpawnActions(const SpawnActions&) = delete;
    SpawnActions& operator=(const SpawnActions&) = delete;

    void duplicate(int descriptor, int target) {
        check(posix_spawn_file_actions_adddup2(&actions_, descriptor, target), "adddup2");
    }
    void open(int descriptor, const std::string& file) {
        check(posix_spawn_file_actions_addopen(&actions_, descriptor, file.c_str(), O_RDWR, 0), "addopen");
    }
    void close(int descriptor) {
        check(posix_spawn_file_actions_addclose(&actions_, descriptor), "addclose");
    }
    void changeDirectory(const std::filesystem::path& directory) {
        check(posix_spawn_file_actions_addchdir_np(&actions_, directory.c_str()), "addchdir");
    }
    void startSession() { setFlags(POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSID); }

    const posix_spawn_file_actions_t* actions() const { return &actions_; }
    const posix_spawnattr_t* attributes() const { return &attributes_; }

private:
    void setFlags(int flags) {
        check(posix_spawnattr_setflags(&attributes_, static_cast<short>(flags)), "posix_spawnattr_setflags");
    }

    posix_spawn_file_actions_t actions_;
    posix_spawnattr_t attributes_;
};

TestProcess::Descriptor& TestProcess::Descriptor::operator=(Descriptor&& other) noexcept {
    close();
    number_ = std::exchange(other.number_, -1);
    return *this;
}

void TestProcess::Descriptor::close() {
    if (isOpen())
        ::close(std::exchange(number_, -1));
}

TestProcess::Pipe TestProcess::makePipe() {
    // Closed in other children: a program would not see the end of an input that another one holds open.
    int ends[2] = {};
    checkErrno(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    return {Descriptor(ends[0]), Descriptor(ends[1])};
}

void TestProcess::setNonBlocking(const Descriptor& descriptor) {
    const int flags = fcntl(descriptor.number(), F_GETFL);
    checkErrno(fcntl(descriptor.number(), F_SETFL, flags | O_NONBLOCK) == 0, "fcntl");
}

int TestProcess::unreadBytes(const Descriptor& descriptor) {
    int bytes = 0;
    checkErrno(ioctl(descriptor.number(), FIONREAD, &bytes) == 0, "ioctl");
    return bytes;
}

TestProcess::TestProcess(const std::vector<std::string>& commandLine)
    : TestProcess(optionsFor(commandLine)) {}

TestProcess::TestProcess(const Options& options) {
    std::signal(SIGPIPE, SIG_IGN);
    if (options.terminal)
        startOnTerminal(options);
    else
        startOnPipes(options);
}

TestProcess::~TestProcess() {
    end();
}

void TestProcess::startOnPipes(const Options& options) {
    Pipe input = makePipe();
    Pipe output = makePipe();
    Pipe errors = options.capturesErrors ? makePipe() : Pipe{};
    setNonBlocking(input.writeEnd);
    if (options.nonBlockingPipes) {
        setNonBlocking(input.readEnd);
        setNonBlocking(output.writeEnd);
    }
    if (options.outputPipeBytes)
        checkErrno(fcntl(output.readEnd.number(), F_SETPIPE_SZ, *options.outputPipeBytes) >= 0,
                   "F_SETPIPE_SZ");
    SpawnActions actions;
    actions.duplicate(input.readEnd.number(), STDIN_FILENO);
    actions.duplicate(output.writeEnd.number(), STDOUT_FILENO);
    if (options.capturesErrors)
        actions.duplicate(errors.writeEnd.number(), STDERR_FILENO);
    spawn(options, actions);
    input_ = std::move(input.writeEnd);
    output_ = std::move(output.readEnd);
    errors_ = std::move(errors.readEnd);
}

void TestProcess::startOnTerminal(const Options& options) {
    output_ = Descriptor(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    checkErrno(output_.isOpen(), "posix_openpt");
    checkErrno(grantpt(output_.number()) == 0, "grantpt");
    checkErrno(unlockpt(output_.number()) == 0, "unlockpt");
    const winsize size{options.terminal->rows, options.terminal->columns, 0, 0};
    checkErrno(ioctl(output_.number(), TIOCSWINSZ, &size) == 0, "TIOCSWINSZ");
    setNonBlocking(output_);
    input_ = Descriptor(fcntl(output_.number(), F_DUPFD_CLOEXEC, 0));
    checkErrno(input_.isOpen(), "fcntl");
    std::array<char, 128> name{};
    check(ptsname_r(output_.number(), name.data(), name.size()), "ptsname_r");
    SpawnActions actions;
    actions.startSession(); // the first terminal that its leader opens becomes the controlling one
    actions.open(STDIN_FILENO, name.data());
    actions.duplicate(STDIN_FILENO, STDOUT_FILENO);
    actions.duplicate(STDIN_FILENO, STDERR_FILENO);
    spawn(options, actions);
}

void TestProcess::spawn(const Options& options, SpawnActions& actions) {
    for (const int descriptor : options.closedDescriptors)
        actions.close(descriptor);
    if (!options.directory.empty())
        actions.changeDirectory(options.directory);
    std::vector<char*> environment;
    if (options.environment)
        environment = pointersTo(*options.environment);
    check(posix_spawn(&process_, options.program.c_str(), actions.actions(), actions.attributes(),
                      pointersTo(options.arguments).data(),
                      options.environment ? environment.data() : environ),
          options.program.c_str());
}

void TestProcess::queue(std::string_view bytes) {
    pendingInput_.append(bytes);
    writeInput();
}

void TestProcess::send(std::string_view bytes) {
    const auto end = Clock::now() + deadline;
    queue(bytes);
    while (hasPendingInput()) {
        if (Clock::now() > end)
            giveUp("The program does not read its input");
        transfer(pollPeriod);
    }
}

void TestProcess::closeInput() {
    closesInput_ = true;
    writeInput();
}

void TestProcess::writeInput() {
    while (input_.isOpen() && hasPendingInput()) {
        const ssize_t written = write(input_.number(), pendingInput_.data() + writtenInput_,
                                      pendingInput_.size() - writtenInput_);
        if (written >= 0) {
            writtenInput_ += static_cast<std::size_t>(written);
        } else if (errno == EAGAIN) {
            break;
        } else if (errno == EPIPE || errno == EIO) { // EIO: of a terminal
            writtenInput_ = pendingInput_.size();
        } else {
            checkErrno(errno == EINTR, "write");
        }
    }
    if (hasPendingInput())
        return;
    pendingInput_.clear(); // at the end only: moving what is left would take quadratic time
    writtenInput_ = 0;
    if (closesInput_)
        input_.close();
}

void TestProcess::readInto(std::string& target, Descriptor& descriptor, std::size_t size) {
    const std::size_t before = target.size();
    target.resize(before + size);
    const ssize_t count = read(descriptor.number(), target.data() + before, size);
    const int error = errno;
    target.resize(before + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    if (count == 0 || (count < 0 && error == EIO)) // EIO: no process has the terminal open any more
        descriptor.close();
    else if (count < 0 && error != EINTR && error != EAGAIN)
        check(error, "read");
}

bool TestProcess::transfer(std::chrono::milliseconds timeOut) {
    std::array<pollfd, 3> ends{{{hasPendingInput() ? input_.number() : -1, POLLOUT, 0},
                                {output_.number(), POLLIN, 0},
                                {errors_.number(), POLLIN, 0}}};
    const int ready = poll(ends.data(), ends.size(), static_cast<int>(timeOut.count()));
    checkErrno(ready >= 0 || errno == EINTR, "poll");
    if (ready <= 0)
        return false;
    if (ends[0].revents != 0)
        writeInput();
    if (ends[1].revents != 0)
        readInto(receivedOutput_, output_, readSize_);
    if (ends[2].revents != 0)
        readInto(receivedErrors_, errors_, readSize_);
    return true;
}

std::optional<std::string> TestProcess::nextLine() {
    const auto end = Clock::now() + deadline;
    for (;;) {
        const std::size_t feed = receivedOutput_.find('\n', scanned_);
        if (feed != std::string::npos) {
            std::string line = receivedOutput_.substr(0, feed);
            receivedOutput_.erase(0, feed + 1);
            scanned_ = 0;
            return line;
        }
        scanned_ = receivedOutput_.size();
        if (!output_.isOpen())
            return std::nullopt;
        if (!transfer(pollPeriod) && Clock::now() > end)
            giveUp("The program says nothing");
    }
}

int TestProcess::unreadInputBytes() const {
    return unreadBytes(input_);
}

int TestProcess::unreadOutputBytes() const {
    return unreadBytes(output_);
}

bool TestProcess::isOutputAbandoned() const {
    pollfd readable{output_.number(), POLLIN, 0};
    checkErrno(poll(&readable, 1, 0) >= 0, "poll");
    return (readable.revents & POLLHUP) != 0;
}

void TestProcess::signal(int number) const {
    checkErrno(::kill(process_, number) == 0, "kill");
}

void TestProcess::kill() {
    end();
    waitForExit();
}

void TestProcess::end() {
    if (endStatus_)
        return;
    int status = 0;
    ::kill(process_, SIGKILL);
    waitpid(process_, &status, 0);
    endStatus_ = status;
}

std::optional<int> TestProcess::endStatus() {
    if (!endStatus_) {
        int status = 0;
        const pid_t ended = waitpid(process_, &status, WNOHANG);
        checkErrno(ended >= 0, "waitpid");
        if (ended == process_)
            endStatus_ = status;
    }
    return endStatus_;
}

int TestProcess::waitForEnd() {
    const auto end = Clock::now() + deadline;
    while (!hasEndedOutput()) {
        if (!transfer(pollPeriod) && Clock::now() > end)
            giveUp("The program does not end");
    }
    while (!endStatus()) {
        if (Clock::now() > end)
            giveUp("The program closed its output but does not end");
        poll(nullptr, 0, 1);
    }
    return *endStatus_;
}

int TestProcess::waitForExit() {
    closeInput();
    return waitForEnd();
}

void TestProcess::giveUp(const std::string& what) const {
    throw std::runtime_error(what + "; unread output:\n" + receivedOutput_ + "\nerrors so far:\n" +
                             receivedErrors_);
}

} // namespace tavel
