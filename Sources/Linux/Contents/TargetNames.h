#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// Translates between pasteboard types and the targets of X11 selections (ICCCM 2.6.2). A type of the
/// catalogue of formats has its MIME names for targets, and text and files the desktops' own names too. Every
/// other type is a target of the same name. Any thread.
namespace tavel::targetName {

inline constexpr std::string_view utf8String = "UTF8_STRING";
inline constexpr std::string_view latin1String = "STRING";
inline constexpr std::string_view anyText = "TEXT";
inline constexpr std::string_view compoundText = "COMPOUND_TEXT";
inline constexpr std::string_view uriList = "text/uri-list";
inline constexpr std::string_view gnomeCopiedFiles = "x-special/gnome-copied-files";
inline constexpr std::string_view mateCopiedFiles = "x-special/mate-copied-files";
inline constexpr std::string_view nautilusClipboard = "x-special/nautilus-clipboard";

/// The targets under which an owner offers the type, the preferred one first. At least one.
std::vector<std::string> offeredFor(const std::string& type);

/// Those of the `offered` targets that deliver the type, the preferred one first. MIME names match in any
/// case (RFC 2045, 5.1) and keep the owner's spelling.
std::vector<std::string> giving(std::string_view type, std::span<const std::string> offered);

/// The type that a target delivers; nullopt for a target of the protocol, which delivers no content.
std::optional<std::string> typeOf(std::string_view target);

/// Whether a type of this name can be offered and read: an atom can have the name, and it is neither a name
/// of the protocol nor a target of another type.
bool canBeType(std::string_view type);

} // namespace tavel::targetName
