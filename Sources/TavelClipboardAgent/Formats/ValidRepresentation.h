#pragma once

#include <string_view>

namespace tavel {

/// Whether `data` may be written to or exported from the pasteboard as the format called `name`: the name is
/// one of `clipboardFormats`, the data is not empty and within the format's limit (4 MiB for text, 128 MiB
/// for everything else), and it is what the name says. Pictures are told by their signature alone; whether
/// they can be decoded is `validImage`'s question. Nothing is copied. Any thread.
bool validRepresentation(std::string_view name, std::string_view data);

} // namespace tavel
