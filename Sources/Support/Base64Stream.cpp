#include "Support/Base64Stream.h"

#include "Support/Base64.h"
#include "Support/Base64Groups.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tavel {

namespace {

/// What is copied without its escapes at a time. It stays in the first-level cache.
constexpr std::size_t partCharacters = std::size_t{8} * 1024;

constexpr std::size_t groupCharacters = 4;
constexpr std::size_t decodedPartBytes = (groupCharacters + partCharacters) / groupCharacters * 3;

} // namespace

std::string DecodedBase64::text() const {
    std::string text;
    const std::size_t ofLastGroup =
        lastGroup.empty() ? 0 : std::min(lastGroup.find('='), lastGroup.size()) - 1;
    appendBase64(text, bytes.view().substr(0, bytes.size() - ofLastGroup));
    return text + lastGroup;
}

Base64Stream::Base64Stream(std::size_t mostBytes)
    : keptBytes_((mostBytes / 3 + 1) * 3),
      decoded_(std::make_shared<ReservedMemory>(keptBytes_ + decodedPartBytes)) {}

Base64Stream::Progress Base64Stream::take(std::string_view text) {
    std::size_t taken = 0;
    while (taken < text.size()) {
        const Progress progress = takePart(text.substr(taken, partCharacters));
        taken += progress.taken;
        if (progress.state != State::open || progress.taken == 0)
            return {taken, progress.state};
    }
    return {taken, State::open};
}

Base64Stream::Progress Base64Stream::takePart(std::string_view part) {
    std::array<char, groupCharacters + partCharacters> characters;
    rest_.copy(characters.data(), groupCharacters);
    const CopiedText copied = copyWithoutSlashEscapes(part, characters.data() + rest_.size());
    const std::string_view unescaped(characters.data(), rest_.size() + copied.written);
    const std::size_t whole = decodeBase64Groups(unescaped, decoded_->bytes() + size_);
    const std::string_view rest = unescaped.substr(whole);
    const std::string_view next = part.substr(copied.taken);

    const bool ends = next.starts_with('"');
    std::array<char, 3> ignored{};
    if (!decodeEndOfBase64(rest, ignored.data()) || (ends && rest.size() == 1) ||
        (next.starts_with('\\') && next.size() > 1))
        return {0, State::refused};
    size_ = std::min(size_ + whole / groupCharacters * 3, keptBytes_);
    rest_ = rest;
    return {copied.taken, ends ? State::ended : State::open};
}

DecodedBase64 Base64Stream::finish() && {
    std::array<char, 3> last{};
    const std::size_t count = decodeEndOfBase64(rest_, last.data()).value_or(0);
    std::memcpy(decoded_->bytes() + size_, last.data(), count);
    size_ = std::min(size_ + count, keptBytes_);
    decoded_->shrink(size_);
    const char* const bytes = decoded_->bytes();
    return {Bytes(std::move(decoded_), bytes, size_), std::move(rest_)};
}

void Base64Stream::writeTaken(char* out) const {
    char* const end = encodeBase64Groups({decoded_->bytes(), size_}, out);
    rest_.copy(end, rest_.size());
}

} // namespace tavel
