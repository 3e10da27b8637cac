#pragma once

#include "Linux/Panel/DescriptorWatch.h"
#include "Linux/Panel/PanelReport.h"
#include "Linux/Panel/PanelRequest.h"
#include "Linux/Panel/Program/NamePanelWindow.h"
#include "Linux/Panel/ReceivedLines.h"

#include <optional>

namespace tavel {

/// Does what the requests say, and writes the reports, for as long as GTK's main loop runs. Ends the process
/// at the end of the requests, and with an error when one cannot be understood.
class PanelSession {
public:
    /// The descriptors stay the caller's.
    PanelSession(int requests, int reports);

private:
    void receive();
    void follow(const PanelStart& start);
    void follow(ScreenPoint origin) const { window_->setOrigin(origin); }
    void follow(const PanelShow&) const { window_->show(); }
    void follow(const PanelHint& hint) const { window_->showHint(hint.text); }
    void report(const PanelReport& report) const;

    int requests_;
    int reports_;
    ReceivedLines lines_;
    std::optional<NamePanelWindow> window_;
    DescriptorWatch watch_;
};

} // namespace tavel
