#pragma once

#include <string_view>

/// The type identifiers that more than one place needs; they are AppKit's on every platform.
namespace tavel::pasteboardType {

inline constexpr std::string_view string = "public.utf8-plain-text";
inline constexpr std::string_view fileUrl = "public.file-url";
inline constexpr std::string_view png = "public.png";
inline constexpr std::string_view tiff = "public.tiff";

} // namespace tavel::pasteboardType
