#pragma once

#include "Support/Bytes.h"

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
};

/// The value as plain text in UTF-8, without zero bytes at the end, which some owners include. A value
/// declared as UTF-8 is returned unchecked. nullopt for a format other than 8 and for compound text beyond
/// Latin-1.
std::optional<Bytes> plainTextOf(const SelectionValue& value);

/// The value as HTML, without zero bytes at the end. Converts UTF-16 with a byte-order mark, which some
/// browsers send, to UTF-8, and returns anything else unchecked.
Bytes htmlOf(const SelectionValue& value);

/// The text in Latin-1; nullopt if it has other characters or is not UTF-8.
std::optional<Bytes> latin1Of(const Bytes& text);

} // namespace tavel
