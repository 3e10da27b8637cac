#pragma once

#include "Linux/LinuxPlatform.h"
#include "Linux/Selections/SelectionEventSource.h"
#include "Linux/X11/DecisionDeadline.h"
#include "Linux/X11/Focus/OnDemandFocusProbe.h"
#include "Linux/X11/Keyboard/X11KeyboardTap.h"
#include "Linux/X11/Selections/X11Selections.h"
#include "Linux/X11/X11Connection.h"

#include <memory>

namespace tavel {

/// The platform of a desktop with an X server. The server's selections serve as pasteboards; keyboard, focus
/// and windows are available.
class X11Platform final : public LinuxPlatform {
public:
    explicit X11Platform(std::unique_ptr<X11Connection> connection);

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    std::string describePasteboard(const std::optional<std::string>& name) override;
    void expectEnd() override { selections_->connection().expectEnd(); }
    bool servesContents() override;
    void handOverContents() override;
    KeyboardTap& keyboardTap() override { return keyboardTap_; }
    FocusProbe& focusProbe() override { return focusProbe_; }
    bool canShowNamePanel() override;
    std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                     NamePanelActions actions) override;

private:
    DecisionDeadline deadline_;
    std::shared_ptr<X11Selections> selections_;
    SelectionEventSource events_;
    OnDemandFocusProbe focusProbe_;
    X11KeyboardTap keyboardTap_;
};

} // namespace tavel
