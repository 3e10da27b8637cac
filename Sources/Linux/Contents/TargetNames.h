#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// How pasteboard types go by in X11 selections: each type under the target names that programs here know it
/// by, and every other type under its own identifier (ICCCM 2.6.2; MIME names as the desktops use them).
namespace tavel::targetName {

inline constexpr std::string_view utf8String = "UTF8_STRING";
inline constexpr std::string_view latin1String = "STRING";
inline constexpr std::string_view anyText = "TEXT";
inline constexpr std::string_view compoundText = "COMPOUND_TEXT";
inline constexpr std::string_view uriList = "text/uri-list";
inline constexpr std::string_view gnomeCopiedFiles = "x-special/gnome-copied-files";
inline constexpr std::string_view mateCopiedFiles = "x-special/mate-copied-files";
inline constexpr std::string_view nautilusClipboard = "x-special/nautilus-clipboard";

/// The targets under which an owner offers the type, the usual one first. At least one.
std::vector<std::string> offeredFor(const std::string& type);

/// Those of the `offered` targets that give the type, the best one first. MIME names match in any case (RFC
/// 2045, 5.1) and come as the owner spells them.
std::vector<std::string> giving(std::string_view type, std::span<const std::string> offered);

/// The type that a target gives. Nothing for a target that is part of the protocol and gives no content.
std::optional<std::string> typeOf(std::string_view target);

/// Whether a type of this name could be offered and read: it is one that an atom can have, and neither a name
/// of the protocol nor one by which another type goes.
bool canBeType(std::string_view type);

} // namespace tavel::targetName
