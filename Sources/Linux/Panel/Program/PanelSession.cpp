#include "Linux/Panel/Program/PanelSession.h"

#include "Support/Files.h"

#include <cstdio>
#include <cstdlib>
#include <variant>

namespace tavel {

namespace {

/// Nothing is taken down: the window goes from the screen with the process.
[[noreturn]] void endProcess(const char* reason) {
    if (reason != nullptr)
        std::fprintf(stderr, "%s\n", reason);
    std::_Exit(reason == nullptr ? 0 : 1);
}

} // namespace

PanelSession::PanelSession(int requests, int reports)
    : requests_(requests), reports_(reports), watch_(requests, [this] { receive(); }) {}

void PanelSession::receive() {
    const bool isOpen = lines_.receive(requests_);
    while (const auto line = lines_.next()) {
        const auto request = panelRequestFrom(*line);
        // The first request makes the window, the others are for it.
        if (!request || std::holds_alternative<PanelStart>(*request) == window_.has_value())
            endProcess("A request cannot be understood.");
        std::visit([this](const auto& one) { follow(one); }, *request);
    }
    if (!isOpen)
        endProcess(nullptr);
}

void PanelSession::follow(const PanelStart& start) {
    window_.emplace(start, [this](const PanelReport& one) { report(one); });
    report(PanelReady{window_->surroundings()});
}

void PanelSession::report(const PanelReport& report) const {
    if (!writeAll(reports_, lineOf(report)))
        endProcess("A report cannot be written.");
}

} // namespace tavel
