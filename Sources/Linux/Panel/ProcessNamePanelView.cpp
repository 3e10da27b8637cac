#include "Linux/Panel/ProcessNamePanelView.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <utility>
#include <variant>

namespace tavel {

ProcessNamePanelView::ProcessNamePanelView(const NamePanelTexts& texts, NamePanelActions actions,
                                           const Log& log, const std::filesystem::path& program)
    : actions_(std::move(actions)), text_(texts.stem), loggedErrors_(log), process_(std::in_place, program) {
    send(PanelStart{texts, getpid()});
    awaitReady();
}

void ProcessNamePanelView::show() {
    if (!process_ || outputWatch_)
        return;
    send(PanelShow{});
    // Not before: what the process may have to tell, its end too, has a meaning only now.
    outputWatch_.emplace(process_->output(), [this] { receive(); });
    outputWatch_->call(); // for what may have come together with its being ready
    if (areErrorsOpen_)
        errorsWatch_.emplace(process_->errors(), [this] { receiveErrors(); });
}

void ProcessNamePanelView::hide() {
    outputWatch_.reset();
    errorsWatch_.reset();
    process_.reset();
}

void ProcessNamePanelView::awaitReady() {
    const auto end = Clock::now() + patience;
    for (bool isOpen = true; isOpen;) {
        if (waitForOutput(end))
            isOpen = lines_.receive(process_->output());
        // Last, as the program's reason is there by the time at which its end is seen.
        if (areErrorsOpen_)
            areErrorsOpen_ = loggedErrors_.receive(process_->errors());
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

/// False if there is only something on the standard error. Throws at the end of the time.
bool ProcessNamePanelView::waitForOutput(Clock::time_point end) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now()).count();
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
    areErrorsOpen_ = loggedErrors_.receive(process_->errors());
    if (!areErrorsOpen_)
        errorsWatch_.reset();
}

void ProcessNamePanelView::follow(const PanelReport& report) {
    std::function<void()> action = actions_.cancel; // a copy: this object may go meanwhile
    if (const auto* const confirmed = std::get_if<PanelConfirmed>(&report)) {
        text_ = confirmed->text;
        action = actions_.confirm;
    }
    action();
}

void ProcessNamePanelView::endWithCancel() {
    if (areErrorsOpen_)
        receiveErrors(); // why it ended
    hide();
    follow(PanelCancelled{});
}

} // namespace tavel
