#pragma once

#include <optional>
#include <string_view>

namespace tavel {

/// The type identifier of a HEIF or AVIF file by the brands in its first box (ISO/IEC 14496-12, "ftyp").
/// nullopt for any other file. The result refers to static storage.
std::optional<std::string_view> heifTypeIdentifier(std::string_view file);

} // namespace tavel
