#pragma once

#include "PlatformHeadless/HeadlessPlatform.h"
#include "PlatformX11/X11Connection.h"
#include "PlatformX11/X11EventSource.h"
#include "PlatformX11/X11Selections.h"

#include <memory>

namespace tavel {

/// The platform of a desktop with an X server: its selections are the pasteboards. All else is as on a
/// machine without a display.
class X11Platform final : public Platform {
public:
    explicit X11Platform(std::unique_ptr<X11Connection> connection);

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    bool servesContents() override;
    void handOverContents() override;

    EventLoop& eventLoop() override { return base_.eventLoop(); }
    ImageCodec& imageCodec() override { return base_.imageCodec(); }
    KeyboardTap& keyboardTap() override { return base_.keyboardTap(); }
    FocusProbe& focusProbe() override { return base_.focusProbe(); }
    std::unique_ptr<NamePanelView> makeNamePanelView() override { return base_.makeNamePanelView(); }
    std::filesystem::path temporaryDirectory() override { return base_.temporaryDirectory(); }
    void becomeAccessory() override { base_.becomeAccessory(); }
    void log(const std::string& message) override { base_.log(message); }

private:
    HeadlessPlatform base_;
    std::shared_ptr<X11Selections> selections_;
    X11EventSource events_;
};

} // namespace tavel
