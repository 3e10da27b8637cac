#include "Fuzz/Fuzz.h"
#include "Support/Base64.h"
#include "Support/Base64Stream.h"

#include <optional>
#include <string>
#include <utility>

namespace tavel {
namespace {

/// Decoding in pieces must give the same result.
void decodeInPieces(std::string_view text, const std::optional<Bytes>& expected) {
    if (text.find_first_of("\"\\") != std::string_view::npos)
        return; // they mean something else in a JSON string
    const std::size_t pieceSize = 1 + text.size() % 37;
    Base64Stream stream(text.size());
    Base64Stream::Progress progress{};
    const std::string string = std::string(text) + '"';
    for (std::size_t start = 0; start < string.size() && progress.state == Base64Stream::State::open;
         start += pieceSize)
        progress = stream.take(std::string_view(string).substr(start, pieceSize));
    require((progress.state == Base64Stream::State::ended) == expected.has_value());
    if (!expected)
        return;
    const DecodedBase64 decoded = std::move(stream).finish();
    require(decoded.bytes.view() == expected->view() && decoded.text() == text);
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
    decodeInPieces(text, decoded);
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
