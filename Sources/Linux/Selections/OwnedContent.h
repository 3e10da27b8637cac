#pragma once

#include "Platform/PasteboardItems.h"

#include <map>
#include <string>

namespace tavel {

/// How a value comes in a property of an X server. Other display servers have no forms.
struct ValueForm {
    std::string type; // name of the property's type
    int format = 8;   // bits: 8, 16 or 32
};

/// What this process owns of a selection.
struct OwnedContent {
    pasteboardItems::Items items;

    /// The forms of values that were taken over from another program, by their targets. A target that is not
    /// here has the form of `valueForTarget`.
    std::map<std::string, ValueForm> forms;
};

} // namespace tavel
