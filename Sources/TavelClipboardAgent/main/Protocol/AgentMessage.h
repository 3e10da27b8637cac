#pragma once

#include "Support/Bytes.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavel {

/// What the files at the paths of an event or a command hold.
namespace contentKind {

inline constexpr std::string_view files = "files";     // the files themselves
inline constexpr std::string_view image = "image";     // one picture, in one file
inline constexpr std::string_view formats = "formats"; // one content, in one file for each format

} // namespace contentKind

namespace logLevel {

inline constexpr std::string_view warning = "warning"; // the only one that the agent sends

} // namespace logLevel

/// The answer to one command.
struct Reply {
    std::uint64_t requestID; // the command's
    bool ok;
    std::string reason;     // of a failure, in French; empty when ok
    std::uint64_t sequence; // the pasteboard's change count
};

/// What the agent reports without being asked. `sequence` is the change count that the event is about;
/// `marker` is the origin marker beside the content, empty if there is none.
namespace event {

/// The content has changed. Another event with the same sequence may describe it.
struct Announcement {
    std::string marker;
    std::uint64_t sequence;
};

struct TextChange {
    Bytes text; // UTF-8
    std::string marker;
    std::uint64_t sequence;
};

struct PathsChange {
    std::string kind; // one of contentKind
    std::vector<std::string> paths;
    std::string marker;
    std::uint64_t sequence;
};

struct Log {
    std::string level; // one of logLevel
    std::string message;
};

/// The content was pasted as a file, whose reference stands beside it now.
struct FileRenamed {
    std::uint64_t sequence;
};

} // namespace event

/// Everything that the agent says to its parent.
using AgentMessage = std::variant<Reply, event::Announcement, event::TextChange, event::PathsChange,
                                  event::Log, event::FileRenamed>;

} // namespace tavel
