#pragma once

#include <sys/wait.h>

#include <cstdint>
#include <filesystem>
#include <iomanip>
#include <nlohmann/json.hpp>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// Commands, events and errors of TavelClipboardAgent. docs/protocol.md says what they mean. All texts are
/// UTF-8. `sequence` is the pasteboard's change count that an event is about. `marker` is the text with which
/// a parent marked its own content, empty if there is none.
namespace tavel::client {

/// The content has changed. Another event with the same sequence may describe it.
struct Change {
    std::string marker;
    std::uint64_t sequence = 0;
    bool operator==(const Change&) const = default;
};

struct TextChange {
    std::string text;
    std::string marker;
    std::uint64_t sequence = 0;
    bool operator==(const TextChange&) const = default;
};

struct FilesChange {
    std::vector<std::filesystem::path> paths;
    std::string marker;
    std::uint64_t sequence = 0;
    bool operator==(const FilesChange&) const = default;
};

/// The picture is in a PNG file of the agent, which deletes it when it reports the next picture, or ends.
struct ImageChange {
    std::filesystem::path path;
    std::string marker;
    std::uint64_t sequence = 0;
    bool operator==(const ImageChange&) const = default;
};

/// One content, with a file of the agent for each format. The file's name tells the format. The agent deletes
/// the files when it reports the next formats, or ends.
struct FormatsChange {
    std::vector<std::filesystem::path> paths;
    std::string marker;
    std::uint64_t sequence = 0;
    bool operator==(const FormatsChange&) const = default;
};

/// A content was pasted as a file: the pasteboard now holds that file beside the content.
struct FileRenamed {
    std::uint64_t sequence = 0;
    bool operator==(const FileRenamed&) const = default;
};

/// The agent did not report a content. `message` is for people, in French.
struct LogMessage {
    std::string level;
    std::string message;
    bool operator==(const LogMessage&) const = default;
};

/// An event of a later agent.
struct UnknownEvent {
    nlohmann::json fields;
    bool operator==(const UnknownEvent&) const = default;
};

using Event = std::variant<Change, TextChange, FilesChange, ImageChange, FormatsChange, FileRenamed,
                           LogMessage, UnknownEvent>;

/// The commands. Paths may be relative to this process's directory.
namespace command {

struct Ping {};

struct WriteText {
    std::string text;   // at most 4 MiB
    std::string marker; // at most 512 bytes, here and below
};

/// Where `expectedSequence` is given, the command fails if the content has changed since that change count.
struct WriteFiles {
    std::vector<std::filesystem::path> paths;
    std::string marker;
    std::optional<std::uint64_t> expectedSequence;
};

/// A picture, from a PNG file.
struct WriteImage {
    std::filesystem::path path;
    std::string marker;
    std::optional<std::uint64_t> expectedSequence;
};

/// One content in several formats: a file for each, with the format's name.
struct WriteFormats {
    std::vector<std::filesystem::path> paths;
    std::string marker;
    std::optional<std::uint64_t> expectedSequence;
};

/// A picture, from the bytes of its file.
struct WriteImageData {
    std::string data;
};

/// The agent shall not report the current content.
struct DiscardPending {};

/// Switches pasting into the file manager on or off.
struct ConfigureFilePrompt {
    bool renamePrompt = false;
};

/// The agent replies and ends.
struct Quit {};

/// A command of a later agent. `fields` is an object.
struct Other {
    std::string name;
    nlohmann::json fields = nlohmann::json::object();
};

} // namespace command

using Command = std::variant<command::Ping, command::WriteText, command::WriteFiles, command::WriteImage,
                             command::WriteFormats, command::WriteImageData, command::DiscardPending,
                             command::ConfigureFilePrompt, command::Quit, command::Other>;

/// How a run of the agent ended.
struct End {
    /// The status of waitpid. Nothing if another part of this process has waited for the agent.
    std::optional<int> waitStatus;
    /// Whether this process wanted it: by end, restart or the command quit.
    bool requested = false;
    /// Why this process killed the agent, if it did: what the program wrote is nothing that an agent writes.
    std::string protocolProblem;

    /// For people, in English: "exit status 0", "signal 9".
    std::string description() const {
        if (!waitStatus)
            return "unknown status";
        if (WIFSIGNALED(*waitStatus))
            return "signal " + std::to_string(WTERMSIG(*waitStatus));
        return "exit status " + std::to_string(WEXITSTATUS(*waitStatus));
    }
};

/// The base of all errors that the agent causes.
class AgentError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The agent's program is missing or cannot be started.
class AgentNotFound : public AgentError {
public:
    using AgentError::AgentError;
};

/// The agent has refused the command.
class CommandRefused : public AgentError {
public:
    CommandRefused(const std::string& reason, std::uint64_t sequence)
        : AgentError(reason), sequence_(sequence) {}

    /// The reason is what(): for the user, in French. This is the change count.
    std::uint64_t sequence() const { return sequence_; }

private:
    std::uint64_t sequence_;
};

/// No reply came in time. The agent may still carry the command out.
class AgentTimeout : public AgentError {
public:
    using AgentError::AgentError;
};

/// More commands wait for an agent that does not read than Options::longestQueue allows.
class AgentBusy : public AgentError {
public:
    using AgentError::AgentError;
};

/// The agent is not running, or has ended before it replied.
class AgentEnded : public AgentError {
public:
    using AgentError::AgentError;
};

/// The program wrote what no agent writes, and was killed.
class ProtocolError : public AgentEnded {
public:
    using AgentEnded::AgentEnded;
};

namespace detail {

/// Writes an event on one line, for logs.
class EventPrinter {
public:
    explicit EventPrinter(std::ostream& stream) : stream_(stream) {}

    void operator()(const Change& change) const { print("change", change); }
    void operator()(const TextChange& change) const {
        stream_ << std::quoted(change.text) << ' ';
        print("text", change);
    }
    void operator()(const FilesChange& change) const { printPaths("files", change); }
    void operator()(const FormatsChange& change) const { printPaths("formats", change); }
    void operator()(const ImageChange& change) const {
        stream_ << change.path << ' ';
        print("image", change);
    }
    void operator()(const FileRenamed& event) const {
        stream_ << "(file renamed, sequence " << event.sequence << ')';
    }
    void operator()(const LogMessage& log) const { stream_ << log.level << ": " << log.message; }
    void operator()(const UnknownEvent& event) const {
        stream_ << event.fields.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }

private:
    template <typename AnyChange>
    void print(const char* kind, const AnyChange& change) const {
        stream_ << '(' << kind << ", sequence " << change.sequence;
        if (!change.marker.empty())
            stream_ << ", marker " << std::quoted(change.marker);
        stream_ << ')';
    }

    template <typename PathsChange>
    void printPaths(const char* kind, const PathsChange& change) const {
        for (const std::filesystem::path& path : change.paths)
            stream_ << path << ' ';
        print(kind, change);
    }

    std::ostream& stream_;
};

} // namespace detail

/// Writes the event for people, on one line if its text has one.
inline std::ostream& operator<<(std::ostream& stream, const Event& event) {
    std::visit(detail::EventPrinter(stream), event);
    return stream;
}

} // namespace tavel::client
