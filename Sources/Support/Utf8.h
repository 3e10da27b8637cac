#pragma once

#include <string_view>

namespace tavel {

/// Whether the bytes are well-formed UTF-8 (Unicode 15, table 3-7: no surrogates, no overlong forms, nothing
/// above U+10FFFF). The empty text is.
bool isUtf8(std::string_view bytes);

} // namespace tavel
