#pragma once

#include "Support/Base64.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

/// The commands that the parent sends, decoded. Each begins with the parent's identifier of the request,
/// which its reply echoes. Optional fields are absent when the line lacks them or has them with another JSON
/// type.
namespace command {

struct ConfigureFilePrompt {
    std::uint64_t requestID;
    bool renamePrompt; // false when absent
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
    std::optional<Base64Text> textBase64;
    std::optional<std::string> marker;
};

struct WriteImageData {
    std::uint64_t requestID;
    std::optional<Base64Text> imageBase64;
};

struct WriteFiles {
    std::uint64_t requestID;
    std::optional<std::string> kind;
    std::vector<std::string> paths; // empty when absent
    std::optional<std::string> marker;
    std::optional<std::uint64_t> expectedSequence;
};

struct Unknown {
    std::uint64_t requestID;
};

} // namespace command

using ClipboardCommand =
    std::variant<command::ConfigureFilePrompt, command::Ping, command::DiscardPending, command::Quit,
                 command::WriteText, command::WriteImageData, command::WriteFiles, command::Unknown>;

} // namespace tavel
