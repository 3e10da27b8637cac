#pragma once

#include <optional>
#include <string_view>

namespace tavel {

/// The type identifier of a HEIF or AVIF still image, told from the brands in its first box (ISO/IEC
/// 14496-12, "ftyp"); nothing for any other file.
std::optional<std::string_view> heifTypeIdentifier(std::string_view file);

} // namespace tavel
