#include "Support/Base64.h"

#include "Support/Base64Groups.h"

#include <array>
#include <cstring>
#include <memory>

namespace tavel {

namespace {

/// Encodes all bytes, with room for whole groups. Returns the end of the output.
char* encode(std::string_view bytes, char* out) {
    out = encodeBase64Groups(bytes, out);
    const std::string_view rest = bytes.substr(bytes.size() / 3 * 3);
    if (rest.empty())
        return out;
    std::array<char, 3> group{};
    rest.copy(group.data(), group.size());
    encodeBase64Groups({group.data(), group.size()}, out);
    return out + rest.size() + 1;
}

/// Encodes in pieces on the stack, which stay in the first-level cache. A string would have to be filled
/// before characters can be written into it.
class Pieces {
public:
    explicit Pieces(std::string_view bytes) : bytes_(bytes) {}

    bool isAtEnd() const { return bytes_.empty(); }

    std::string_view encodeNext() {
        const std::string_view now = bytes_.substr(0, size / 4 * 3);
        bytes_.remove_prefix(now.size());
        return {encoded_, encode(now, encoded_)};
    }

    std::string_view escape(std::string_view encoded) {
        return {escaped_, copyWithSlashEscapes(encoded, escaped_)};
    }

private:
    // Processors wrongly take a load to depend on a store shortly before if the addresses are equal modulo
    // 4096. With this size, those of the two buffers are half of that apart.
    static constexpr std::size_t size = 6144;

    std::string_view bytes_;
    alignas(64) char encoded_[size];
    char escaped_[2 * size];
};

/// The parts of a base64 text.
struct Shape {
    std::string_view text;    // without the padding
    std::size_t groups;       // whole groups of four characters
    std::size_t decodedBytes; // of the whole text
};

/// nullopt if no bytes have an encoding of this length or with this much padding.
std::optional<Shape> shapeOf(std::string_view text) {
    const std::size_t missing = (4 - text.size() % 4) % 4;
    const std::size_t padded = text.size() + missing;
    while (text.ends_with('='))
        text.remove_suffix(1);
    const std::size_t padding = padded - text.size();
    if (padding > 2) // a text of padding alone has four characters of it
        return std::nullopt;
    const std::size_t groups = text.size() / 4;
    const std::size_t rest = text.size() % 4;
    return Shape{text, groups, groups * 3 + (rest == 0 ? 0 : rest - 1)};
}

/// False if a character is outside the alphabet.
bool decodeTo(const Shape& shape, char* out) {
    const std::size_t whole = shape.groups * 4;
    const std::string_view rest = shape.text.substr(whole);
    std::array<char, 4> group;
    group.fill('A'); // no bits
    rest.copy(group.data(), group.size());
    std::array<char, 3> bytes{};
    if (decodeBase64Groups({group.data(), group.size()}, bytes.data()) == 0 ||
        decodeBase64Groups(shape.text.substr(0, whole), out) != whole)
        return false;
    if (!rest.empty())
        std::memcpy(out + shape.groups * 3, bytes.data(), rest.size() - 1);
    return true;
}

} // namespace

void appendBase64(std::string& text, std::string_view bytes) {
    text.reserve(text.size() + (bytes.size() + 2) / 3 * 4);
    for (Pieces pieces(bytes); !pieces.isAtEnd();)
        text.append(pieces.encodeNext());
}

void appendEscapedBase64(std::string& text, std::string_view bytes) {
    // One character in 64 is a slash if all are equally frequent.
    const std::size_t characters = (bytes.size() + 2) / 3 * 4;
    text.reserve(text.size() + characters + characters / 48);
    for (Pieces pieces(bytes); !pieces.isAtEnd();)
        text.append(pieces.escape(pieces.encodeNext()));
}

std::optional<Bytes> decodeBase64(std::string_view text) {
    const auto shape = shapeOf(text);
    if (!shape)
        return std::nullopt;
    std::shared_ptr<char[]> decoded = std::make_unique_for_overwrite<char[]>(shape->decodedBytes);
    char* const out = decoded.get();
    if (!decodeTo(*shape, out))
        return std::nullopt;
    return Bytes(std::move(decoded), out, shape->decodedBytes);
}

} // namespace tavel
