#pragma once

#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

/// The content of any command, for comparison.
struct CommandContent {
    std::size_t kind = 0;
    std::uint64_t requestID = 0;
    std::vector<std::optional<std::string>> texts;
    std::vector<std::optional<std::uint64_t>> numbers;

    bool operator==(const CommandContent&) const = default;
};

inline std::optional<std::string> contentOf(const std::optional<Bytes>& payload) {
    return payload ? std::optional<std::string>(payload->view()) : std::nullopt;
}

inline CommandContent contentOf(const ClipboardCommand& decoded) {
    CommandContent content;
    content.kind = decoded.index();
    content.requestID = std::visit([](const auto& one) { return one.requestID; }, decoded);
    if (const auto* const prompt = std::get_if<command::ConfigureFilePrompt>(&decoded))
        content.numbers = {prompt->renamePrompt ? 1U : 0U};
    if (const auto* const text = std::get_if<command::WriteText>(&decoded))
        content.texts = {contentOf(text->text), text->marker};
    if (const auto* const image = std::get_if<command::WriteImageData>(&decoded))
        content.texts = {contentOf(image->image)};
    if (const auto* const files = std::get_if<command::WriteFiles>(&decoded)) {
        content.texts = {files->kind, files->marker};
        content.texts.insert(content.texts.end(), files->paths.begin(), files->paths.end());
        content.numbers = {files->expectedSequence};
    }
    return content;
}

} // namespace tavel
