#include "Linux/Store/StorePasteboards.h"

#include "Linux/Store/StoreDirectory.h"
#include "Linux/Store/StorePasteboard.h"

#include <filesystem>

namespace tavel {

std::shared_ptr<Pasteboard> StorePasteboards::open(const std::optional<std::string>& name) {
    if (store_ == nullptr) {
        const std::filesystem::path directory = pasteboardStoreDirectory();
        preparePasteboardStoreDirectory(directory);
        store_ = std::make_shared<const PasteboardStore>(directory);
    }
    return std::make_shared<StorePasteboard>(store_, name);
}

} // namespace tavel
