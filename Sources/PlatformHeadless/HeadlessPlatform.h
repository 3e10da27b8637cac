#pragma once

#include "Platform/Platform.h"
#include "PlatformDates/LocalTimestamp.h"
#include "PlatformHeadless/GlibEventLoop.h"
#include "PlatformHeadless/HeadlessDevices.h"
#include "PlatformHeadless/LmdbEnvironment.h"
#include "PlatformImages/OnDemandImageCodec.h"
#include "Support/FileUrl.h"
#include "Support/Module.h"

#include <memory>

namespace tavel {

/// The platform of a machine without a display: embedded pasteboards, and nothing to see or type into.
class HeadlessPlatform final : public Platform {
public:
    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    bool servesContents() override { return false; }
    void handOverContents() override {}
    EventLoop& eventLoop() override { return eventLoop_; }
    ImageCodec& imageCodec() override { return imageCodec_; }
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts&, NamePanelActions) override {
        return nullptr;
    }
    std::string fileUrl(const std::string& path) override { return fileUrlFromPath(path); }
    std::string localTimestamp() override { return timestamp_.now(); }
    std::filesystem::path temporaryDirectory() override;
    void becomeAccessory() override {}
    void log(const std::string& message) override;

private:
    GlibEventLoop eventLoop_;
    OnDemandImageCodec imageCodec_{[this](const auto& line) { log(line); }};
    LocalTimestamp timestamp_{[this](const auto& line) { log(line); }, modulePath("tavel-dates")};
    RefusedKeyboardTap keyboardTap_;
    NoFocusProbe focusProbe_;
    std::shared_ptr<const LmdbEnvironment> environment_; // opened with the first pasteboard
};

} // namespace tavel
