#pragma once

#include "Console/Watch.h"

#include <sys/types.h>

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A program that this one runs, with pipes to its standard input and output; standard error is shared. It is
/// in a process group of its own, so that Ctrl-C in the terminal reaches it only through us. Works while the
/// main context runs. SIGPIPE must be ignored in this process; the program gets the system's default.
class ChildProcess {
public:
    struct Handlers {
        std::function<void(std::string_view bytes)> output;
        /// Called once, when all output has been handed over. The status is that of waitpid.
        std::function<void(int status)> ended;
    };

    /// Starts the program at `arguments[0]`, a path. Throws Error.
    ChildProcess(const std::vector<std::string>& arguments, Handlers handlers);
    /// Kills the program if it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    /// Never blocks: what the program does not take at once is written later.
    void send(std::string bytes);

    /// Ends the program's input behind what was sent.
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
    std::size_t queueOffset_ = 0; // bytes of the queue that are written
    bool closing_ = false;
    Watch inputWatch_;
    Watch outputWatch_;
    Watch endWatch_;
};

/// A status of waitpid in words: "exit status 3", "signal 9 (Killed)".
std::string describeEnd(int status);

} // namespace tavel
