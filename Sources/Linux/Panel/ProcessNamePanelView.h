#pragma once

#include "Linux/Panel/DescriptorWatch.h"
#include "Linux/Panel/LoggedErrors.h"
#include "Linux/Panel/OnDemandNamePanelView.h"
#include "Linux/Panel/PanelProcess.h"
#include "Linux/Panel/PanelReport.h"
#include "Linux/Panel/PanelRequest.h"
#include "Linux/Panel/ReceivedLines.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// A panel whose window is that of a process of its own; the process ends with `hide`. Its reports are read
/// by GLib's default main context while it is shown. Whatever may be wrong with the process, nothing here
/// waits for it once it is ready, and when it ends while it is shown, that is a cancel.
class ProcessNamePanelView final : public NamePanelView {
public:
    /// For how long the program may take to get ready: many times of what a busy machine needs.
    static constexpr std::chrono::seconds patience{3};

    /// Starts the program and waits until it is ready. Throws std::runtime_error with the reason if it does
    /// not get there.
    ProcessNamePanelView(const NamePanelTexts& texts, NamePanelActions actions, const Log& log,
                         const std::filesystem::path& program);

    ScreenSurroundings surroundings() override { return surroundings_; }
    void setOrigin(ScreenPoint origin) override { send(origin); }
    void show() override;
    std::string enteredText() override { return text_; }
    void showHint(std::string_view hint) override { send(PanelHint{std::string(hint)}); }
    void hide() override;

private:
    using Clock = std::chrono::steady_clock;

    void awaitReady();
    bool waitForOutput(Clock::time_point end);
    void send(const PanelRequest& request) const;
    void receive();
    void receiveErrors();
    void follow(const PanelReport& report);
    void endWithCancel();

    NamePanelActions actions_;
    std::string text_;
    ScreenSurroundings surroundings_;
    ReceivedLines lines_;
    LoggedErrors loggedErrors_;
    bool areErrorsOpen_ = true;
    std::optional<PanelProcess> process_;
    std::optional<DescriptorWatch> outputWatch_;
    std::optional<DescriptorWatch> errorsWatch_;
    std::shared_ptr<void> life_ = std::make_shared<int>(); // lets an action's caller know of its end
};

} // namespace tavel
