#pragma once

#include "Support/Bytes.h"

#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// A value as an owner delivered it.
struct SelectionValue {
    std::string target; // what was asked for
    std::string type;   // the property's type by name, which decides on the encoding (ICCCM 2.6.2)
    int format = 8;     // bits: 8, 16 or 32
    Bytes bytes;
};

/// Plain text in UTF-8. Zero bytes at the end, which some owners count in, are left out. What claims to be
/// UTF-8 comes as it is, valid or not. Nothing for a compound text in more than Latin-1.
std::optional<Bytes> plainTextOf(const SelectionValue& value);

/// HTML in UTF-8: UTF-16 with a byte-order mark, as some browsers send it, is converted. Everything else
/// comes as it is, without zero bytes at the end.
Bytes htmlOf(const SelectionValue& value);

/// The text in Latin-1; nothing if it has a character that is not in there, or is not UTF-8.
std::optional<Bytes> latin1Of(const Bytes& text);

} // namespace tavel
