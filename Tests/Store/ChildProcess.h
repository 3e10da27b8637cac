#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// A child process with pipes at its standard input and output. It is killed with this object. Operations
/// that wait throw at a deadline far beyond what a busy machine needs.
class ChildProcess {
public:
    /// The path of the program and its arguments.
    explicit ChildProcess(const std::vector<std::string>& commandLine);
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// The next line that the child prints; nullopt at the end of its output.
    std::optional<std::string> nextLine();

    void sendLine(const std::string& line) const;
    void closeInput();

    /// Sends SIGKILL and waits for the end.
    void kill();

    /// Waits for the end. Returns the wait status, which is 0 if and only if the process exited with the
    /// status 0.
    int waitForExit();

private:
    pid_t process_ = -1; // -1 after the wait for its end
    int input_ = -1;
    int output_ = -1;
    std::string received_;
};

} // namespace tavel
