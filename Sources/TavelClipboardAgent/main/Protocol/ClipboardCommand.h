#pragma once

#include "Support/Bytes.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

/// The commands that the parent sends. Each begins with the parent's request identifier, which the reply
/// repeats. An optional field of a decoded command is nullopt if the line lacks it or gives it another JSON
/// type. A text or an image is also nullopt if it is no base64, or if there was no memory for it.
namespace command {

struct ConfigureFilePrompt {
    std::uint64_t requestID;
    bool renamePrompt; // false if the line lacks it
};

struct Ping {
    std::uint64_t requestID;
};

struct DiscardPending {
    std::uint64_t requestID;
};

struct Quit {
    std::uint64_t requestID;
};

struct WriteText {
    std::uint64_t requestID;
    std::optional<Bytes> text;
    std::optional<std::string> marker;
};

struct WriteImageData {
    std::uint64_t requestID;
    std::optional<Bytes> image;
};

struct WriteFiles {
    std::uint64_t requestID;
    std::optional<std::string> kind;
    std::vector<std::string> paths; // empty if the line lacks them
    std::optional<std::string> marker;
    std::optional<std::uint64_t> expectedSequence;
};

/// A command whose name is none of the above.
struct Unknown {
    std::uint64_t requestID;
};

} // namespace command

using ClipboardCommand =
    std::variant<command::ConfigureFilePrompt, command::Ping, command::DiscardPending, command::Quit,
                 command::WriteText, command::WriteImageData, command::WriteFiles, command::Unknown>;

} // namespace tavel
