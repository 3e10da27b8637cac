#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <stdexcept>

namespace tavel {

std::unique_ptr<X11KeyboardTap> TappedDesktop::makeTap(std::chrono::milliseconds decisionTime) {
    return std::make_unique<X11KeyboardTap>(desktop_.display().c_str(), loop_, deadline_, decisionTime);
}

xcb_window_t TappedDesktop::startInFileManager(std::chrono::milliseconds decisionTime) {
    tap_ = makeTap(decisionTime);
    const bool created = tap_->create([this](const KeyEvent& event) {
        seen_.push_back(event);
        return decide_(event);
    });
    if (!created)
        throw std::runtime_error("The tap is refused.");
    return switchToFileManager();
}

xcb_window_t TappedDesktop::switchToFileManager() {
    const xcb_window_t window = desktop_.open("Thunar");
    desktop_.activate(window);
    runUntil([&] { return desktop_.isGrabbed(window, pcKey::v); });
    return window;
}

void TappedDesktop::runUntil(const std::function<bool()>& condition) {
    const auto end = std::chrono::steady_clock::now() + timeOut;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            throw std::runtime_error("What was waited for did not happen.");
        loop_.runOnce(std::chrono::milliseconds(1));
    }
}

void TappedDesktop::runPosted() {
    bool ran = false;
    loop_.post([&ran] { ran = true; });
    runUntil([&ran] { return ran; });
}

void TappedDesktop::settle(xcb_window_t window) {
    const std::size_t before = desktop_.received(window, pcKey::a).size();
    desktop_.type({pcKey::a});
    runUntil([&] { return desktop_.received(window, pcKey::a).size() == before + 2; });
    runPosted();
}

void TappedDesktop::awaitEvents(std::size_t count) {
    runUntil([&] { return seen_.size() >= count; });
}

std::vector<KeyEventType> TappedDesktop::seenTypes() const {
    std::vector<KeyEventType> types;
    for (const KeyEvent& event : seen_)
        types.push_back(event.type);
    return types;
}

} // namespace tavel
