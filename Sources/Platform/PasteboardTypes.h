#pragma once

#include <algorithm>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

/// The type identifiers that more than one place needs; they are AppKit's on every platform.
namespace tavel::pasteboardType {

inline constexpr std::string_view string = "public.utf8-plain-text";
inline constexpr std::string_view html = "public.html";
inline constexpr std::string_view fileUrl = "public.file-url";
inline constexpr std::string_view png = "public.png";
inline constexpr std::string_view tiff = "public.tiff";

/// The longest name of a type that is read, in bytes, and the most types of one content. Programs offer some
/// dozens, with names of a few dozen bytes.
inline constexpr std::size_t longestNameBytes = 255;
inline constexpr std::size_t mostTypes = 1'000;

/// Whether a type of that name can be written and read: it has a name, and not too long a one.
inline bool isReadableName(std::string_view type) {
    return !type.empty() && type.size() <= longestNameBytes;
}

/// Whether the type is among those that a pasteboard offers.
inline bool isOffered(std::span<const std::string> offered, std::string_view type) {
    return std::ranges::find(offered, type) != offered.end();
}

inline bool isAnyOffered(std::span<const std::string> offered, std::span<const std::string_view> wanted) {
    return std::ranges::any_of(wanted, [&](std::string_view type) { return isOffered(offered, type); });
}

} // namespace tavel::pasteboardType
