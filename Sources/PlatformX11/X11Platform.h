#pragma once

#include "PlatformHeadless/HeadlessPlatform.h"
#include "PlatformX11/DecisionDeadline.h"
#include "PlatformX11/Keyboard/X11KeyboardTap.h"
#include "PlatformX11/OnDemandFocusProbe.h"
#include "PlatformX11/X11Connection.h"
#include "PlatformX11/X11EventSource.h"
#include "PlatformX11/X11Selections.h"

#include <memory>

namespace tavel {

/// The platform of a desktop with an X server: its selections are the pasteboards, and it has a keyboard, a
/// program in front, and windows. All else is as on a machine without a display.
class X11Platform final : public Platform {
public:
    explicit X11Platform(std::unique_ptr<X11Connection> connection);

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    bool servesContents() override;
    void handOverContents() override;

    EventLoop& eventLoop() override { return base_.eventLoop(); }
    ImageCodec& imageCodec() override { return base_.imageCodec(); }
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override;
    std::string fileUrl(const std::string& path) override { return base_.fileUrl(path); }
    std::string localTimestamp() override { return base_.localTimestamp(); }
    std::filesystem::path temporaryDirectory() override { return base_.temporaryDirectory(); }
    void becomeAccessory() override { base_.becomeAccessory(); }
    void log(const std::string& message) override { base_.log(message); }

private:
    HeadlessPlatform base_;
    DecisionDeadline deadline_;
    std::shared_ptr<X11Selections> selections_;
    X11EventSource events_;
    OnDemandFocusProbe focusProbe_;
    X11KeyboardTap keyboardTap_;
};

} // namespace tavel
