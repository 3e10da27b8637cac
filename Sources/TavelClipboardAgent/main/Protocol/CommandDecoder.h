#pragma once

#include "Support/LineReader.h"
#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <memory>
#include <optional>

namespace tavel {

/// Decodes lines from the parent. For one thread at a time.
class CommandDecoder {
public:
    CommandDecoder();
    ~CommandDecoder();
    CommandDecoder(const CommandDecoder&) = delete;
    CommandDecoder& operator=(const CommandDecoder&) = delete;

    /// nullopt unless the line is one JSON object (RFC 8259) with a string "command" and a number
    /// "request_id". A leading byte-order mark is skipped, objects and arrays nest at most 512 deep, and
    /// numbers may have any size. If a key occurs twice, the last value counts. Overwrites the line's bytes;
    /// the command shares the bytes of the line's payload.
    ///
    /// Throws std::bad_alloc if there is no memory for the parser, whose tables take four times the line. The
    /// line is then unchanged. A value for which there is no memory counts as absent.
    std::optional<ClipboardCommand> decode(const LineReader::Line& line);

private:
    class Parser;
    std::unique_ptr<Parser> parser_;
};

} // namespace tavel
