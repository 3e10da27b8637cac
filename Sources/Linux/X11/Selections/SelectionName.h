#pragma once

#include <optional>
#include <string>

namespace tavel {

/// The selection that serves as the pasteboard of that name: the selection of the same name, or CLIPBOARD for
/// the general pasteboard (nullopt). A name that no atom can have (empty, with a zero byte, longer than
/// 65,535 bytes) is replaced by one made of its SHA-256.
std::string selectionNameOf(const std::optional<std::string>& pasteboardName);

} // namespace tavel
