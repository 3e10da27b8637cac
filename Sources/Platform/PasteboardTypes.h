#pragma once

#include <algorithm>
#include <span>
#include <string>
#include <string_view>

/// The type identifiers that more than one place needs; they are AppKit's on every platform.
namespace tavel::pasteboardType {

inline constexpr std::string_view string = "public.utf8-plain-text";
inline constexpr std::string_view fileUrl = "public.file-url";
inline constexpr std::string_view png = "public.png";
inline constexpr std::string_view tiff = "public.tiff";

/// Whether the type is among those that a pasteboard offers.
inline bool isOffered(std::span<const std::string> offered, std::string_view type) {
    return std::ranges::find(offered, type) != offered.end();
}

inline bool isAnyOffered(std::span<const std::string> offered, std::span<const std::string_view> wanted) {
    return std::ranges::any_of(wanted, [&](std::string_view type) { return isOffered(offered, type); });
}

} // namespace tavel::pasteboardType
