#pragma once

#include <optional>
#include <string>

namespace tavel {

/// The name of the selection that is the pasteboard of that name: the same name, or CLIPBOARD for the general
/// pasteboard. A name that no atom can have (empty, with a zero byte, longer than 65,535 bytes) has one made
/// of its SHA-256 in its place.
std::string selectionNameOf(const std::optional<std::string>& pasteboardName);

} // namespace tavel
