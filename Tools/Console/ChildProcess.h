#pragma once

#include "Console/Watch.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A child process with pipes to its standard input and output; it shares standard error. It has a process
/// group of its own, so that Ctrl-C in the terminal does not reach it. The handlers are called while the main
/// context runs. SIGPIPE must be ignored in this process; the child gets the system's default.
class ChildProcess {
public:
    struct Handlers {
        std::function<void(std::string_view bytes)> output;
        /// Called once, after all output, with the status of waitpid.
        std::function<void(int status)> ended;
    };

    /// Starts the program at the path `arguments[0]`. Throws Error if it cannot.
    ChildProcess(const std::vector<std::string>& arguments, Handlers handlers);
    /// Kills the program if it is still running.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Never blocks: bytes that do not fit into the pipe are written later.
    void send(std::string bytes);

    /// Closes the program's input once everything is written.
    void closeInput();

    bool isRunning() const { return process_ != 0; }

    void sendSignal(int number) const;

private:
    void start(const std::vector<std::string>& arguments, int input, int output);
    void writeQueue();
    bool readOutput();
    void noteEnd(int status);

    Handlers handlers_;
    pid_t process_ = 0;
    int input_ = -1;  // our end; -1 once closed
    int output_ = -1; // our end; -1 once closed
    std::string queue_;
    std::size_t queueOffset_ = 0; // bytes of the queue already written
    bool closing_ = false;
    Watch inputWatch_;
    Watch outputWatch_;
    Watch endWatch_;
};

/// A status of waitpid for people: "exit status 3", "signal 9 (Killed)".
std::string describeEnd(int status);

} // namespace tavel
