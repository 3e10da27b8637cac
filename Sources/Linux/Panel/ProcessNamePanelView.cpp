#include "Linux/Panel/ProcessNamePanelView.h"

#include "Linux/Base/DescriptorWatch.h"
#include "Linux/Base/Modules.h"
#include "Linux/Panel/PanelMessages.h"
#include "Linux/Panel/PanelProcess.h"
#include "Linux/Panel/ReceivedLines.h"

#include <poll.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace tavel {

namespace {

/// Many times what a busy machine needs.
constexpr std::chrono::seconds readyTimeout{3};

/// Logs the lines of the panel program's standard error, up to a total size. Further lines are dropped.
class ErrorLog {
public:
    explicit ErrorLog(Log log) : log_(std::move(log)) {}

    /// Reads once from a non-blocking descriptor. False at the end of the input.
    bool receive(int descriptor) {
        const bool isOpen = lines_.receive(descriptor);
        while (const auto line = lines_.next()) {
            logged_ += line->size();
            if (!line->empty() && logged_ <= maxBytes)
                log_("tavel-panel: " + *line);
        }
        return isOpen;
    }

private:
    static constexpr std::size_t maxBytes = std::size_t{64} * 1024;

    Log log_;
    ReceivedLines lines_;
    std::size_t logged_ = 0;
};

/// A panel whose window belongs to a child process, which `hide` ends. This object waits for the process only
/// until it is ready.
class ProcessNamePanelView final : public NamePanelView {
public:
    /// Starts the program and waits until it is ready. Throws std::runtime_error with the reason if it does
    /// not become ready.
    ProcessNamePanelView(const NamePanelTexts& texts, NamePanelActions actions,
                         std::function<void(const std::string&)> copied, const Log& log,
                         const std::filesystem::path& program);

    ScreenSurroundings surroundings() override { return surroundings_; }
    void setOrigin(ScreenPoint origin) override { send(origin); }
    void show() override;
    /// The program shows the window with the server's present time, which no window manager takes for a stale
    /// request.
    bool hasKeyboard() override { return true; }
    void demandKeyboard() override {}
    std::string enteredText() override { return text_; }
    void showHint(std::string_view hint) override { send(PanelHint{std::string(hint)}); }
    void hide() override;

private:
    using Clock = std::chrono::steady_clock;

    void awaitReady();
    bool waitForOutput(Clock::time_point deadline);
    void send(const PanelRequest& request) const;
    void receive();
    void receiveErrors();
    void follow(const PanelReport& report);
    void endWithCancel();

    NamePanelActions actions_;
    std::function<void(const std::string&)> copied_;
    std::string text_;
    ScreenSurroundings surroundings_;
    ReceivedLines lines_;
    ErrorLog errorLog_;
    bool areErrorsOpen_ = true; // standard error has not reached its end
    std::optional<PanelProcess> process_;
    std::optional<DescriptorWatch> outputWatch_;
    std::optional<DescriptorWatch> errorsWatch_;
    std::shared_ptr<void> life_ =
        std::make_shared<int>(); // expires with this object, which an action may destroy
};

ProcessNamePanelView::ProcessNamePanelView(const NamePanelTexts& texts, NamePanelActions actions,
                                           std::function<void(const std::string&)> copied, const Log& log,
                                           const std::filesystem::path& program)
    : actions_(std::move(actions)), copied_(std::move(copied)), text_(texts.stem), errorLog_(log),
      process_(std::in_place, program) {
    send(PanelStart{texts, getpid()});
    awaitReady();
}

void ProcessNamePanelView::show() {
    if (!process_ || outputWatch_)
        return;
    send(PanelShow{});
    // Watched only from now on: reports, and the end of the process, matter only while the panel is shown.
    outputWatch_.emplace(process_->output(), [this] { receive(); });
    outputWatch_->call(); // for lines that arrived together with PanelReady
    if (areErrorsOpen_)
        errorsWatch_.emplace(process_->errors(), [this] { receiveErrors(); });
}

void ProcessNamePanelView::hide() {
    outputWatch_.reset();
    errorsWatch_.reset();
    process_.reset();
}

void ProcessNamePanelView::awaitReady() {
    const auto deadline = Clock::now() + readyTimeout;
    for (bool isOpen = true; isOpen;) {
        if (waitForOutput(deadline))
            isOpen = lines_.receive(process_->output());
        // Read last: when the end of the output is seen, the reason is already on the standard error.
        if (areErrorsOpen_)
            areErrorsOpen_ = errorLog_.receive(process_->errors());
        if (const auto line = lines_.next()) {
            const auto report = panelReportFrom(*line);
            const PanelReady* const ready = report ? std::get_if<PanelReady>(&*report) : nullptr;
            if (ready == nullptr)
                throw std::runtime_error("its program says something else than that it is ready");
            surroundings_ = ready->surroundings;
            return;
        }
    }
    throw std::runtime_error("its program ended or said too much");
}

/// True when the standard output has data or has ended. Throws at the deadline.
bool ProcessNamePanelView::waitForOutput(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
    if (left <= 0)
        throw std::runtime_error("its program did not get ready in time");
    std::array<pollfd, 2> descriptors{
        {{process_->output(), POLLIN, 0}, {areErrorsOpen_ ? process_->errors() : -1, POLLIN, 0}}};
    return poll(descriptors.data(), descriptors.size(), static_cast<int>(left)) > 0 &&
           descriptors.front().revents != 0;
}

void ProcessNamePanelView::send(const PanelRequest& request) const {
    if (process_)
        process_->send(lineOf(request));
}

void ProcessNamePanelView::receive() {
    const std::weak_ptr<void> life = life_;
    const bool isOpen = lines_.receive(process_->output());
    while (const auto line = lines_.next()) {
        const auto report = panelReportFrom(*line);
        if (report && !std::holds_alternative<PanelReady>(*report))
            follow(*report);
        else
            endWithCancel();
        if (life.expired() || !process_)
            return;
    }
    if (!isOpen)
        endWithCancel();
}

void ProcessNamePanelView::receiveErrors() {
    areErrorsOpen_ = errorLog_.receive(process_->errors());
    if (!areErrorsOpen_)
        errorsWatch_.reset();
}

void ProcessNamePanelView::follow(const PanelReport& report) {
    if (const auto* const copied = std::get_if<PanelCopied>(&report)) {
        copied_(copied->text);
        return;
    }
    std::function<void()> action = actions_.cancel; // a copy: the action may destroy this object
    if (const auto* const confirmed = std::get_if<PanelConfirmed>(&report)) {
        text_ = confirmed->text;
        action = actions_.confirm;
    }
    action();
}

void ProcessNamePanelView::endWithCancel() {
    if (areErrorsOpen_)
        receiveErrors(); // the reason for the end
    hide();
    follow(PanelCancelled{});
}

} // namespace

std::filesystem::path namePanelProgramPath() {
    return moduleDirectory() / "tavel-panel";
}

std::unique_ptr<NamePanelView> makeProcessNamePanelView(const NamePanelTexts& texts,
                                                        const NamePanelActions& actions,
                                                        const std::function<void(const std::string&)>& copied,
                                                        const Log& log,
                                                        const std::filesystem::path& program) {
    try {
        return std::make_unique<ProcessNamePanelView>(texts, actions, copied, log, program);
    } catch (const std::runtime_error& error) {
        log(std::string("The naming panel cannot be shown: ") + error.what());
        return nullptr;
    }
}

} // namespace tavel
