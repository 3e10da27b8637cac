#include "Linux/Wayland/Protocol/OfferedTypes.h"

#include "Linux/Wayland/DataControlModule.h"
#include "Platform/PasteboardTypes.h"

#include <new>

namespace tavel {

void OfferedTypes::add(std::string_view type) noexcept {
    if (isLost_ || types_.size() == mostOfferedTypes || !pasteboardType::isReadableName(type))
        return;
    try {
        if (known_.emplace(type).second)
            types_.emplace_back(type);
    } catch (const std::bad_alloc&) {
        isLost_ = true;
        types_.clear();
    }
}

} // namespace tavel
