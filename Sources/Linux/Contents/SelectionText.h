#pragma once

#include "Support/Bytes.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// A value as its owner sent it.
struct SelectionValue {
    std::string target; // the requested target
    std::string type;   // name of the property's type, which determines the encoding (ICCCM 2.6.2)
    int format = 8;     // bits: 8, 16 or 32
    Bytes bytes;
    bool isCut = false; // more followed; what is here exceeds what the reader takes
};

/// The most bytes that a value can have which becomes `limit` bytes of plain text, or of HTML. Each character
/// takes no fewer bytes in UTF-8 than in Latin-1, but an ASCII character takes one instead of two of UTF-16.
/// There is room for a byte-order mark and for a terminating zero of any width.
std::size_t largestPlainTextValue(std::size_t limit);
std::size_t largestHtmlValue(std::size_t limit);

/// The value as plain text in UTF-8, without zero bytes at the end, which some owners include. A value
/// declared as UTF-8 is returned unchecked. nullopt for a format other than 8 and for compound text beyond
/// Latin-1. Of a value that was cut, the last character may be missing, and zero bytes at the end stay: the
/// text is still longer than the reader takes.
std::optional<Bytes> plainTextOf(const SelectionValue& value);

/// The value as HTML, without zero bytes at the end. Converts UTF-16 with a byte-order mark, which some
/// browsers send, to UTF-8, and returns anything else unchecked.
Bytes htmlOf(const SelectionValue& value);

/// The text in Latin-1; nullopt if it has other characters or is not UTF-8.
std::optional<Bytes> latin1Of(const Bytes& text);

} // namespace tavel
