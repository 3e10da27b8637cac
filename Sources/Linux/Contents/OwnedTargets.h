#pragma once

#include "Platform/PasteboardItems.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// What a requestor gets for a target.
struct TargetValue {
    std::string type; // of the property, by name
    Bytes bytes;      // in format 8
};

/// The targets that an owner of the items offers for their content, each once, in the items' order.
std::vector<std::string> contentTargets(const pasteboardItems::Items& items);

/// What the items give for one of their targets. Nothing for any other target, and for text that the target's
/// encoding cannot say.
std::optional<TargetValue> valueForTarget(const pasteboardItems::Items& items, const std::string& target);

} // namespace tavel
