#include "Tests/Support/XServer.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdint>
#include <stdexcept>
#include <system_error>

namespace tavel {

namespace {

constexpr int notStarted = 127;

void checkErrno(bool succeeded, const char* what) {
    if (!succeeded)
        throw std::system_error(errno, std::generic_category(), what);
}

/// The child's way into the server, which will write its number to the pipe. Only what is allowed between
/// fork and exec in a process with threads.
[[noreturn]] void becomeServer(pid_t parent, unsigned int numberPipe, const char* numberPipeText) {
    // What was ignored or blocked here would be so there. A server that finds SIGUSR1 ignored, moreover,
    // sends one to its parent, which would end the tests.
    for (const int signal : {SIGUSR1, SIGTERM, SIGPIPE})
        ::signal(signal, SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    // Not SIGKILL: a server that is told to end removes its files.
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent)
        _exit(notStarted);

    const int null = open("/dev/null", O_RDWR);
    for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        dup2(null, standard);
    if (numberPipe > 3)
        close_range(3, numberPipe - 1, 0);
    close_range(numberPipe + 1, ~0U, 0);
    fcntl(static_cast<int>(numberPipe), F_SETFD, 0);

    execlp("Xvfb", "Xvfb", "-displayfd", numberPipeText, "-screen", "0", "1280x800x24", "-nolisten", "tcp",
           "-noreset", static_cast<char*>(nullptr));
    _exit(notStarted);
}

} // namespace

XServer::XServer() {
    int ends[2] = {};
    checkErrno(pipe2(ends, O_CLOEXEC) == 0, "pipe2");
    // Not in the place of a standard descriptor, should one be closed here.
    const int writeEnd = fcntl(ends[1], F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    close(ends[1]);
    try {
        start(writeEnd);
        close(writeEnd);
        readDisplay(ends[0]);
    } catch (...) {
        close(ends[0]);
        stop();
        throw;
    }
    close(ends[0]);
}

void XServer::start(int numberPipe) {
    checkErrno(numberPipe >= 0, "fcntl");
    const std::string number = std::to_string(numberPipe);
    const pid_t parent = getpid();
    process_ = fork();
    if (process_ == 0)
        becomeServer(parent, static_cast<unsigned int>(numberPipe), number.c_str());
    checkErrno(process_ > 0, "fork");
}

/// The server writes its number and a line feed once it serves.
void XServer::readDisplay(int numberPipe) {
    const auto end = std::chrono::steady_clock::now() + deadline;
    std::string number;
    for (char character = '\0'; character != '\n'; number += character) {
        pollfd readable{numberPipe, POLLIN, 0};
        const auto remaining =
            std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
        if (poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(remaining.count(), 0))) == 0)
            throw std::runtime_error("Xvfb does not start within " + std::to_string(deadline.count()) +
                                     " s.");
        if (read(numberPipe, &character, 1) != 1)
            throw std::runtime_error("Xvfb ended before it served. Is the package xvfb installed?");
    }
    number.pop_back();
    display_ = ":" + number;
}

void XServer::stop() {
    if (process_ <= 0)
        return;
    // While it still lives: afterwards the number, and the file with it, may be another server's.
    if (waitpid(process_, nullptr, WNOHANG) == 0) {
        removeFile();
        kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    process_ = -1;
}

/// There is no lock file: a server that picks its number itself makes none.
void XServer::removeFile() const {
    if (!display_.empty())
        unlink(("/tmp/.X11-unix/X" + display_.substr(1)).c_str());
}

} // namespace tavel
