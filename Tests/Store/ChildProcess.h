#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// A program that runs as a child, with pipes at its standard input and output. Killed with this object.
/// What waits gives up with an exception after a deadline far beyond what a busy machine needs.
class ChildProcess {
public:
    /// The path of the program and its arguments.
    explicit ChildProcess(const std::vector<std::string>& commandLine);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The next line that the child prints; nothing at the end of its output.
    std::optional<std::string> nextLine();

    void sendLine(const std::string& line) const;
    void closeInput();

    /// Sends SIGKILL and waits for the end.
    void kill();

    /// Waits for the end. Gives the wait status, which is 0 if and only if the process ended by itself with
    /// the status 0.
    int waitForExit();

private:
    pid_t process_ = -1; // -1 once it has been waited for
    int input_ = -1;
    int output_ = -1;
    std::string received_;
};

} // namespace tavel
