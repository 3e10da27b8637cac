#include "PlatformHeadless/HeadlessPlatform.h"

#include "PlatformHeadless/HeadlessPasteboard.h"
#include "PlatformHeadless/StoreDirectory.h"
#include "PlatformHeadless/TemporaryDirectory.h"

#include <syslog.h>

namespace tavel {

std::shared_ptr<Pasteboard> HeadlessPlatform::openPasteboard(const std::optional<std::string>& name) {
    if (environment_ == nullptr) {
        const std::filesystem::path directory = pasteboardStoreDirectory();
        preparePasteboardStoreDirectory(directory);
        environment_ = std::make_shared<const LmdbEnvironment>(directory);
    }
    return std::make_shared<HeadlessPasteboard>(environment_, name);
}

std::filesystem::path HeadlessPlatform::temporaryDirectory() {
    return userTemporaryDirectory();
}

void HeadlessPlatform::log(const std::string& message) {
    syslog(LOG_USER | LOG_ERR, "%s", message.c_str());
}

} // namespace tavel
