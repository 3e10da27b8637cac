#pragma once

#include <cstddef>
#include <string_view>

/// The inner loops of base64 (RFC 4648, section 4) and of its form in a JSON string, in which a slash may be
/// written as a backslash and a slash. They use the vector instructions of the processor that they run on.
/// None allocates, keeps state or handles padding. No input and output overlap, except as told. Copies are
/// fastest if the addresses of both, modulo 4096, are about half of that apart. Any thread.
namespace tavel {

/// Encodes the whole groups of three bytes in `bytes` and leaves out the one or two bytes behind them. Writes
/// exactly four characters for each group, and returns the end of the output.
char* encodeBase64Groups(std::string_view bytes, char* out);

/// Decodes groups of four characters from the start of `text`, up to the first group that is not whole or has
/// a character outside the alphabet. Returns the number of characters in the decoded groups. Writes exactly
/// three bytes for each of them. `out` may be text.data(): the bytes then replace characters that were read.
std::size_t decodeBase64Groups(std::string_view text, char* out);

struct CopiedText {
    std::size_t taken = 0;   // characters of the input
    std::size_t written = 0; // characters of the output
};

/// Copies `text` without the backslash of each `\/`, up to the first quotation mark, and up to the first
/// backslash that no slash follows: another escape, or the end of a piece. `out` has room for text.size()
/// characters, of which those behind the written ones may change, too.
CopiedText copyWithoutSlashEscapes(std::string_view text, char* out);

/// Copies `text` with a backslash before each slash. Returns the end of the output, which takes at most twice
/// as many characters. `out` has room for that, of which the part behind the end may change, too.
char* copyWithSlashEscapes(std::string_view text, char* out);

} // namespace tavel
