#pragma once

#include "Support/Bytes.h"
#include "Support/ReservedMemory.h"

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tavel {

/// A base64 text as its bytes, from which it can be made again.
struct DecodedBase64 {
    Bytes bytes;
    /// The characters of the last group, with its padding, if that group encodes less than three bytes.
    std::string lastGroup;

    /// The characters. Throws std::bad_alloc.
    std::string text() const;
};

/// Decodes the base64 of a JSON string piece by piece as it arrives, so that no more than a piece of the text
/// is held. A slash may be written as a backslash and a slash. Accepts exactly what `decodeBase64` does. For
/// one thread.
class Base64Stream {
public:
    enum class State {
        open,   // the string goes on
        ended,  // the string's closing quotation mark follows
        refused // what follows makes the string no base64, or needs another escape
    };

    struct Progress {
        std::size_t taken;
        State state;
    };

    /// Of a text with more than `mostBytes` bytes, keeps up to three bytes more than that, and checks the
    /// rest. Reserves the addresses for all of them. Throws std::bad_alloc.
    explicit Base64Stream(std::size_t mostBytes);

    /// Decodes the beginning of `text`, the characters that follow those taken so far. While the string is
    /// open, all is taken except for a backslash at the end, which has to come again with its successor.
    Progress take(std::string_view text);

    /// The whole text, once it has ended. Its bytes take no more memory than they need.
    DecodedBase64 finish() &&;

    /// The number of characters that `writeTaken` writes.
    std::size_t takenSize() const { return size_ / 3 * 4 + rest_.size(); }

    /// Writes the characters that were taken, with plain slashes. Those beyond the kept bytes are left out.
    void writeTaken(char* out) const;

private:
    Progress takePart(std::string_view part);

    std::size_t keptBytes_;
    std::shared_ptr<ReservedMemory> decoded_;
    std::size_t size_ = 0; // bytes of whole groups
    std::string rest_;     // up to four characters: a group that may lack some or end with padding
};

} // namespace tavel
