#include "Support/Base64.h"

#include "Support/Base64Groups.h"

#include <algorithm>
#include <array>
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

std::optional<std::size_t> decodeEndOfBase64(std::string_view end, char* out) {
    std::array<char, 4> group{'A', 'A', 'A', 'A'}; // A stands for zero bits
    const std::size_t characters = std::min(end.find('='), end.size());
    const bool isPadded = characters < end.size();
    if (end.size() > group.size() || (isPadded && characters < 2) ||
        end.find_first_not_of('=', characters) != std::string_view::npos)
        return std::nullopt;
    if (end.empty())
        return 0;
    end.copy(group.data(), characters);
    if (decodeBase64Groups({group.data(), group.size()}, out) != group.size())
        return std::nullopt;
    return characters - 1;
}

std::optional<Bytes> decodeBase64(std::string_view text) {
    std::shared_ptr<char[]> decoded = std::make_unique_for_overwrite<char[]>((text.size() + 3) / 4 * 3);
    char* const out = decoded.get();
    const std::size_t whole = decodeBase64Groups(text, out);
    const std::string_view end = text.substr(whole);
    const auto endBytes = decodeEndOfBase64(end, out + whole / 4 * 3);
    if (!endBytes || end.size() == 1)
        return std::nullopt;
    return Bytes(std::move(decoded), out, whole / 4 * 3 + *endBytes);
}

} // namespace tavel
