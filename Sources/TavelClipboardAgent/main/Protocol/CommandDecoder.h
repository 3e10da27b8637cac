#pragma once

#include "Support/LineReader.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <memory>
#include <optional>

namespace tavel {

/// Turns lines of the protocol into commands. Used by one thread.
class CommandDecoder {
public:
    CommandDecoder();
    ~CommandDecoder();
    CommandDecoder(const CommandDecoder&) = delete;
    CommandDecoder& operator=(const CommandDecoder&) = delete;

    /// Nothing unless the line is one JSON object (RFC 8259; a leading byte-order mark is skipped, objects
    /// and arrays nest at most 512 deep, numbers may have any size) with a string "command" and a number
    /// "request_id". Of a key that comes twice the last one counts. The line's bytes are used up; the payload
    /// of a long line shares its buffer.
    std::optional<ClipboardCommand> decode(const LineReader::Line& line);

private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

} // namespace tavel
