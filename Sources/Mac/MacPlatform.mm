#include "Mac/Application.h"
#include "Mac/FileUrls.h"
#include "Mac/MacEventLoop.h"
#include "Mac/MacFocusProbe.h"
#include "Mac/MacImageCodec.h"
#include "Mac/MacKeyboardTap.h"
#include "Mac/MacNamePanelView.h"
#include "Mac/MacPasteboard.h"
#include "Mac/SystemServices.h"
#include "Platform/Platform.h"
#include "Support/FileUrl.h"

namespace tavel {

namespace {

class MacPlatform final : public Platform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override {
        return std::make_shared<MacPasteboard>(name);
    }

    std::string describePasteboard(const std::optional<std::string>& name) override {
        return name ? "the pasteboard \"" + *name + "\" of macOS" : "the general pasteboard of macOS";
    }

    /// The pasteboard server holds what this process copied.
    bool servesContents() override { return false; }
    void handOverContents() override {}

    EventLoop& eventLoop() override { return eventLoop_; }
    ImageCodec& imageCodec() override { return imageCodec_; }
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }

    /// Deliberate: the tick looks at the parent.
    bool watchParent(std::int32_t, std::function<void()>) override { return false; }
    void expectEnd() override {}

    bool canShowNamePanel() override { return true; }
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

std::unique_ptr<Platform> makePlatform(std::vector<PassedOverPlace>*) {
    return std::make_unique<MacPlatform>();
}

} // namespace tavel
