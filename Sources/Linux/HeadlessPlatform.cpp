#include "Linux/HeadlessPlatform.h"

#include "Linux/Store/StoreDirectory.h"
#include "Linux/Store/StorePasteboard.h"

#include <filesystem>

namespace tavel {

std::shared_ptr<Pasteboard> HeadlessPlatform::openPasteboard(const std::optional<std::string>& name) {
    if (environment_ == nullptr) {
        const std::filesystem::path directory = pasteboardStoreDirectory();
        preparePasteboardStoreDirectory(directory);
        environment_ = std::make_shared<const LmdbEnvironment>(directory);
    }
    return std::make_shared<StorePasteboard>(environment_, name);
}

} // namespace tavel
