#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {

/// A program that a test runs as a child process, on pipes or on a terminal. Killed with this object.
///
/// Whatever waits throws at a deadline far beyond what a busy machine needs. System calls that fail throw
/// std::system_error. Used by one thread. SIGPIPE is ignored in this process from the first object on: a
/// program that is gone must not take the tests along.
class TestProcess {
public:
    static constexpr std::chrono::seconds deadline{60};

    struct TerminalSize {
        unsigned short rows;
        unsigned short columns;
    };

    struct Options {
        /// The path of the program.
        std::string program;
        /// What the program is told, its own name first.
        std::vector<std::string> arguments;
        /// As "NAME=value"; this process's environment if there is none.
        std::optional<std::vector<std::string>> environment;
        /// Where the program starts; in this process's working directory if empty.
        std::filesystem::path directory;
        /// The program's controlling terminal, which its standard descriptors then are. Pipes if there is
        /// none.
        std::optional<TerminalSize> terminal;
        /// Whether the errors go to a pipe of their own. They go where this process's errors go if not. A
        /// terminal always takes them, among the output.
        bool capturesErrors = false;
        /// Standard descriptors that the program does not get.
        std::vector<int> closedDescriptors;
        /// Whether the program's ends of the pipes for input and output are in non-blocking mode.
        bool nonBlockingPipes = false;
        /// How many bytes of output fit into the pipe, if not the system's usual number.
        std::optional<int> outputPipeBytes;
    };

    explicit TestProcess(const Options& options);

    /// On pipes, without a capture of errors. The path of the program and its arguments.
    explicit TestProcess(const std::vector<std::string>& commandLine);

    ~TestProcess();
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    pid_t processIdentifier() const { return process_; }

    /// Writes what fits into the pipe or terminal now; `transfer` writes the rest. What a program that is
    /// gone cannot take is lost.
    void queue(std::string_view bytes);

    /// Writes everything. Whenever the pipe is full, output is taken in, so that neither side waits for the
    /// other for ever. What a program that is gone cannot take is lost.
    void send(std::string_view bytes);

    void sendLine(const std::string& line) { send(line + '\n'); }

    /// Closes the input behind everything that is queued. Does nothing to a terminal.
    void closeInput();

    /// Closes this side of the output.
    void closeOutput() { output_.close(); }

    /// Reads once and writes what fits, after a wait of at most `timeOut` for either to be possible. False
    /// if there was nothing to transfer. The end of the output counts as something.
    bool transfer(std::chrono::milliseconds timeOut);

    /// Whether the output and the captured errors have ended, or are closed here.
    bool hasEndedOutput() const { return !output_.isOpen() && !errors_.isOpen(); }

    /// The next line of the output without its line feed; nothing at the end of the output, when `output`
    /// holds the rest, which has no line feed.
    std::optional<std::string> nextLine();

    /// What has been read and not been taken as lines.
    const std::string& output() const { return receivedOutput_; }
    const std::string& errors() const { return receivedErrors_; }

    /// Reads at most so many bytes of the output at a time, from now on.
    void setReadSize(std::size_t bytes) { readSize_ = bytes; }

    int unreadInputBytes() const;
    int unreadOutputBytes() const;

    /// Whether nobody holds the writing end of the output any more. What was written may still be unread.
    bool isOutputAbandoned() const;

    void signal(int number) const;

    /// Ends the program with SIGKILL, unless it has ended. Does not wait for whatever else holds its output.
    void end();

    /// The same, and waits as `waitForExit` does.
    void kill();

    /// The wait status if the program has ended. Does not wait.
    std::optional<int> endStatus();

    /// Waits until the program, and whatever else holds its output, has ended. Gives the wait status, which
    /// is 0 if and only if the program ended by itself with the status 0.
    int waitForEnd();

    /// The same, but closes the input first.
    int waitForExit();

private:
    class Descriptor {
    public:
        Descriptor() = default;
        explicit Descriptor(int number) : number_(number) {}
        ~Descriptor() { close(); }
        Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
        Descriptor& operator=(Descriptor&& other) noexcept;

        int number() const { return number_; }
        bool isOpen() const { return number_ >= 0; }
        void close();

    private:
        int number_ = -1;
    };

    struct Pipe {
        Descriptor readEnd;
        Descriptor writeEnd;
    };

    class SpawnActions;

    static Pipe makePipe();
    static void setNonBlocking(const Descriptor& descriptor);
    static int unreadBytes(const Descriptor& descriptor);
    void startOnPipes(const Options& options);
    void startOnTerminal(const Options& options);
    void spawn(const Options& options, SpawnActions& actions);
    bool hasPendingInput() const { return writtenInput_ < pendingInput_.size(); }
    void writeInput();
    void readInto(std::string& target, Descriptor& descriptor, std::size_t size);
    [[noreturn]] void giveUp(const std::string& what) const;

    pid_t process_ = -1;
    std::optional<int> endStatus_;
    Descriptor input_; // of a terminal: the same open file as output_
    Descriptor output_;
    Descriptor errors_;
    bool closesInput_ = false;
    std::string pendingInput_;
    std::size_t writtenInput_ = 0; // bytes of `pendingInput_`
    std::string receivedOutput_;
    std::string receivedErrors_;
    std::size_t scanned_ = 0; // bytes of the output that are known to hold no line feed
    std::size_t readSize_ = std::size_t{256} * 1024;
};

} // namespace tavel
