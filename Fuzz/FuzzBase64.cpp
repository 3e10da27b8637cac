#include "Fuzz/Fuzz.h"
#include "Support/Base64.h"

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>

namespace tavel {
namespace {

/// Decoding in place must give the same result as decoding into a new buffer.
void decodeInPlace(std::string_view text, const std::optional<Bytes>& expected) {
    auto buffer = std::make_shared<std::string>(text);
    const char* const start = buffer->data();
    const std::span<char> characters(*buffer);
    const auto bytes = Base64Text(std::move(buffer), characters).decode();
    require(bytes.has_value() == expected.has_value());
    require(!bytes || (bytes->view() == expected->view() && bytes->data() == start));
}

} // namespace
} // namespace tavel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tavel;
    const std::string_view text = inputText(data, size);
    std::string encoded;
    appendBase64(encoded, text);
    require(decodeBase64(encoded).value().view() == text);

    const auto decoded = decodeBase64(text);
    decodeInPlace(text, decoded);
    if (!decoded)
        return 0;
    std::string again;
    appendBase64(again, decoded->view());
    const std::string_view unpadded = text.substr(0, text.find('='));
    require(again.size() == unpadded.size());
    // The last character may hold bits that belong to no byte.
    const bool hasSpareBits = decoded->size() % 3 != 0;
    const std::size_t compared = again.size() - (hasSpareBits ? 1 : 0);
    require(unpadded.substr(0, compared) == std::string_view(again).substr(0, compared));
    return 0;
}
