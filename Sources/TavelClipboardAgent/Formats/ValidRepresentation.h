#pragma once

#include <string_view>

namespace tavel {

/// Whether `data` may be written to or exported from the pasteboard as the format called `name`: the name is
/// one of `clipboardFormats`, and the data is not empty, within the format's limit, and valid for the format.
/// Of pictures only the signature is checked; `validImage` tells whether they can be decoded. Nothing is
/// copied. Any thread.
bool validRepresentation(std::string_view name, std::string_view data);

// What is valid as the formats that have no signature. The data is not empty.

/// UTF-8 that contains "<svg".
bool isSvg(std::string_view data);

/// "{\rtf" within the first 32 bytes, which are ASCII, with only white space before it.
bool isRtf(std::string_view data);

/// UTF-8 without a zero byte.
bool isPlainText(std::string_view data);

} // namespace tavel
