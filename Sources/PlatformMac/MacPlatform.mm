#include "PlatformMac/MacPlatform.h"

#include "PlatformMac/ApplicationEvents.h"
#include "PlatformMac/BackgroundActivity.h"
#include "PlatformMac/FileUrls.h"
#include "PlatformMac/LocalDate.h"
#include "PlatformMac/MacEventLoop.h"
#include "PlatformMac/MacFocusProbe.h"
#include "PlatformMac/MacImageCodec.h"
#include "PlatformMac/MacKeyboardTap.h"
#include "PlatformMac/MacNamePanelView.h"
#include "PlatformMac/MacPasteboard.h"
#include "PlatformMac/SystemLog.h"
#include "PlatformMac/UserDirectories.h"
#include "Support/FileUrl.h"

namespace tavel {

namespace {

class MacPlatform final : public Platform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override {
        return std::make_shared<MacPasteboard>(name);
    }

    /// What was copied lives in the pasteboard server.
    bool servesContents() override { return false; }
    void handOverContents() override {}

    EventLoop& eventLoop() override { return eventLoop_; }
    ImageCodec& imageCodec() override { return imageCodec_; }
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }

    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override {
        return makeMacNamePanelView(texts, actions);
    }

    std::string fileUrl(const std::string& path) override {
        return fileUrlOfPath(path).value_or(fileUrlFromPath(path));
    }
    std::string localTimestamp() override { return tavel::localTimestamp(); }
    std::filesystem::path temporaryDirectory() override { return userTemporaryDirectory(); }

    void becomeAccessory() override {
        becomeAccessoryApplication();
        keepPaceInBackground();
    }

    void log(const std::string& message) override { writeToSystemLog(message); }

private:
    MacEventLoop eventLoop_;
    MacImageCodec imageCodec_;
    MacKeyboardTap keyboardTap_;
    MacFocusProbe focusProbe_;
};

} // namespace

std::unique_ptr<Platform> makeMacPlatform() {
    return std::make_unique<MacPlatform>();
}

} // namespace tavel
