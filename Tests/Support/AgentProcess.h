#pragma once

#include "Tests/Support/RecordedLines.h"
#include "Tests/Support/TestProcess.h"

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The real agent program, run as a child with this process as its parent. Killed with this object, which
/// also fails the running test if the agent wrote anything to standard error: it never may.
///
/// Waits as TestProcess does. Used by one thread.
class AgentProcess {
public:
    static constexpr std::chrono::seconds deadline = TestProcess::deadline;

    struct Options {
        std::vector<std::string> arguments;
        /// What differs from this process's environment; no value removes the variable.
        std::map<std::string, std::optional<std::string>> environment;
        /// A program with its arguments, to which the agent's command line is appended; the agent's parent is
        /// then whatever that program makes it.
        std::vector<std::string> launcher;
        /// What the agent is told as its own path, if not the real one. Not together with a launcher.
        std::optional<std::string> programName;
        /// Standard descriptors that the agent does not get.
        std::vector<int> closedDescriptors;
        /// Whether the agent's ends of the pipes are in non-blocking mode.
        bool nonBlockingPipes = false;
        /// How many bytes of output fit into the pipe, if not the system's usual number.
        std::optional<int> outputPipeBytes;
    };

    explicit AgentProcess(const Options& options);
    ~AgentProcess();
    AgentProcess(const AgentProcess&) = delete;
    AgentProcess& operator=(const AgentProcess&) = delete;

    /// Of the agent, or of its launcher.
    pid_t processIdentifier() const { return process_.processIdentifier(); }

    /// Writes to the agent's input. Whenever that pipe is full, output is taken in, so that neither side
    /// waits for the other for ever. What an agent that is gone cannot take is lost.
    void send(std::string_view bytes);

    /// Writes each byte only when the agent has read the one before.
    void sendByteByByte(std::string_view bytes);

    void closeInput();

    /// Closes this side of the agent's output.
    void closeOutput() { process_.closeOutput(); }

    /// The agent's next line without its line feed; nothing at the end of its output.
    std::optional<std::string> nextLine();

    /// The agent's next line as JSON. Throws if there is none.
    nlohmann::json nextMessage();

    /// What comes before the end of the output.
    std::vector<nlohmann::json> remainingMessages();

    /// Reads at most so many bytes of the output at a time, from now on.
    void setReadSize(std::size_t bytes) { process_.setReadSize(bytes); }

    /// How much output lies in the pipe.
    int unreadOutputBytes() const { return process_.unreadOutputBytes(); }

    /// Whether the agent has closed its output, or has ended, whatever of it is unread.
    bool isOutputAbandoned() const { return process_.isOutputAbandoned(); }

    /// Waits until the agent has read its input and each of its threads waits for something.
    void waitUntilIdle();

    /// Waits for a whole second in which no thread of the agent runs. An agent with a tick has none.
    void waitUntilAtRest();

    /// Waits for the end of the process, taking in its output. Gives the wait status, which is 0 if and only
    /// if the process ended by itself with the status 0.
    int waitForExit();

    void signal(int number) const { process_.signal(number); }

private:
    RecordedLines recordedLines_;
    TestProcess process_;
};

} // namespace tavel
