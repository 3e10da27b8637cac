#pragma once

#include "Linux/Store/PasteboardStore.h"
#include "Platform/Pasteboard.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// Opens pasteboards of the user's store, which the first of them opens. Main thread only.
class StorePasteboards {
public:
    /// Throws Error if the store cannot be used.
    std::shared_ptr<Pasteboard> open(const std::optional<std::string>& name);

private:
    std::shared_ptr<const PasteboardStore> store_;
};

} // namespace tavel
