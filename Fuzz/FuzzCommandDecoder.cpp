#include "Fuzz/Fuzz.h"
#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"
#include "Tests/Unit/Agent/TestLine.h"

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace tavel {
namespace {

std::optional<std::string> payloadOf(std::optional<Base64Text> text) {
    if (!text)
        return std::nullopt;
    const auto expected = decodeBase64(text->view());
    const auto bytes = std::move(*text).decode();
    require(bytes.has_value() == expected.has_value());
    require(!bytes || bytes->view() == expected->view());
    return bytes ? std::optional<std::string>(bytes->view()) : std::nullopt;
}

/// The content of any command, for comparison.
struct Content {
    std::size_t kind = 0;
    std::uint64_t requestID = 0;
    std::optional<std::string> payload;
    std::vector<std::optional<std::string>> texts;
    std::vector<std::optional<std::uint64_t>> numbers;

    bool operator==(const Content&) const = default;
};

Content contentOf(ClipboardCommand decoded) {
    Content content;
    content.kind = decoded.index();
    content.requestID = std::visit([](const auto& one) { return one.requestID; }, decoded);
    if (auto* const prompt = std::get_if<command::ConfigureFilePrompt>(&decoded))
        content.numbers = {prompt->renamePrompt ? 1U : 0U};
    if (auto* const text = std::get_if<command::WriteText>(&decoded)) {
        content.payload = payloadOf(std::move(text->textBase64));
        content.texts = {text->marker};
    }
    if (auto* const image = std::get_if<command::WriteImageData>(&decoded))
        content.payload = payloadOf(std::move(image->imageBase64));
    if (auto* const files = std::get_if<command::WriteFiles>(&decoded)) {
        content.texts = {files->kind, files->marker};
        content.texts.insert(content.texts.end(), files->paths.begin(), files->paths.end());
        content.numbers = {files->expectedSequence};
    }
    return content;
}

std::optional<Content> decode(CommandDecoder& decoder, std::string_view text, TestLine::Kind kind) {
    TestLine line(text, kind);
    auto decoded = decoder.decode(line.take());
    return decoded ? std::optional(contentOf(std::move(*decoded))) : std::nullopt;
}

} // namespace
} // namespace tavel

/// Decodes each line of the input twice: lent, as short lines are, and owned, as long ones are.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    CommandDecoder decoder;
    std::string_view rest = inputText(data, size);
    while (!rest.empty()) {
        const std::string_view line = rest.substr(0, rest.find('\n'));
        rest.remove_prefix(std::min(rest.size(), line.size() + 1));
        const auto lent = decode(decoder, line, TestLine::Kind::lent);
        require(decode(decoder, line, TestLine::Kind::owned) == lent);
    }
    return 0;
}
