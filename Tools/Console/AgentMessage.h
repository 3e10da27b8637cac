#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavel {

/// What the agent says, decoded. The names are those of the protocol.
namespace message {

struct Reply {
    std::uint64_t requestID;
    bool ok;
    std::string reason; // empty when ok
    std::uint64_t sequence;
};

/// The pasteboard has a new content, which a later message with the same sequence may describe.
struct Announcement {
    std::string marker;
    std::uint64_t sequence;
};

struct TextChange {
    std::string text;
    std::string marker;
    std::uint64_t sequence;
};

struct PathsChange {
    std::string kind; // "files", "image" or "formats"
    std::vector<std::string> paths;
    std::string marker;
    std::uint64_t sequence;
};

struct Log {
    std::string level;
    std::string text;
};

struct FileRenamed {
    std::uint64_t sequence;
};

/// A line that is none of the above.
struct Unintelligible {
    std::string line;
};

} // namespace message

using AgentMessage =
    std::variant<message::Reply, message::Announcement, message::TextChange, message::PathsChange,
                 message::Log, message::FileRenamed, message::Unintelligible>;

AgentMessage decodeAgentMessage(std::string_view line);

} // namespace tavel
