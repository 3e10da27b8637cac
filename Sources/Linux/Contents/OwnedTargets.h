#pragma once

#include "Platform/PasteboardItems.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The value that a requestor gets for a target.
struct TargetValue {
    std::string type; // name of the property's type
    Bytes bytes;      // format 8
};

/// The targets that an owner of the items offers, each once, in the order of the items.
std::vector<std::string> contentTargets(const pasteboardItems::Items& items);

/// The value of the items for one of their targets. nullopt for any other target, and for text that the
/// target's encoding cannot express.
std::optional<TargetValue> valueForTarget(const pasteboardItems::Items& items, const std::string& target);

} // namespace tavel
