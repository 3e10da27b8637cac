#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"

#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FileNames.h"
#include "TavelClipboardAgent/FilePaste/PanelPlacement.h"
#include "TavelClipboardAgent/Messages.h"

#include <unistd.h>

#include <chrono>
#include <exception>
#include <utility>

namespace tavel {

namespace {

/// Longer than a system needs that grants the request, and shorter than a user needs to begin typing.
constexpr std::chrono::milliseconds keyboardCheckInterval{100};

/// The first demand is expected to suffice. After all of them a further one would only disturb a user who has
/// begun to do something else.
constexpr int mostKeyboardDemands = 5;

} // namespace

std::shared_ptr<FileNamePanel> FileNamePanel::make(Platform& platform, std::string_view stem,
                                                   std::string_view ext) {
    std::shared_ptr<FileNamePanel> panel(new FileNamePanel(platform, ext));
    // The action keeps the panel alive until it returns, because `finished_` may release the last owner.
    const auto action = [panel](void (FileNamePanel::*method)()) {
        return [weak = std::weak_ptr(panel), method] {
            const auto alive = weak.lock();
            if (alive == nullptr)
                return;
            try {
                (alive.get()->*method)();
            } catch (const std::exception&) {
                // It must not reach the system's code, which calls the action. The user can try again.
            }
        };
    };
    const NamePanelTexts texts{std::string(messages::panelTitle), messages::extensionKept(ext),
                               std::string(stem), std::string(messages::panelCancel),
                               std::string(messages::panelConfirm)};
    panel->view_ = platform.makeNamePanelView(
        texts, {action(&FileNamePanel::confirmName), action(&FileNamePanel::cancelName)});
    if (panel->view_ == nullptr)
        throw Error("Tavel", 6, "No window can be shown here.");
    if (const auto origin = panelOrigin(panel->view_->surroundings()))
        panel->view_->setOrigin(*origin);
    return panel;
}

void FileNamePanel::show() {
    isShown_ = true;
    view_->show();
    if (view_->hasKeyboard())
        return;
    shownOver_ = processInFront();
    awaitKeyboard(mostKeyboardDemands);
}

void FileNamePanel::hide() {
    isShown_ = false;
    view_->hide();
}

/// Goes on with up to so many demands until the window has the keyboard.
void FileNamePanel::awaitKeyboard(int demands) {
    if (demands == 0)
        return;
    platform_.eventLoop().postAfter(keyboardCheckInterval, [weak = weak_from_this(), demands] {
        if (const auto alive = weak.lock())
            alive->demandKeyboard(demands);
    });
}

/// Ends for good when the window has the keyboard. The user who then goes elsewhere does so deliberately.
void FileNamePanel::demandKeyboard(int demands) {
    if (!isShown_ || view_->hasKeyboard() || hasUserGoneElsewhere())
        return;
    view_->demandKeyboard();
    awaitKeyboard(demands - 1);
}

std::optional<std::int32_t> FileNamePanel::processInFront() {
    const auto frontmost = platform_.focusProbe().frontmostApplication();
    return frontmost ? std::optional(frontmost->processIdentifier) : std::nullopt;
}

bool FileNamePanel::hasUserGoneElsewhere() {
    const auto process = processInFront();
    return process && process != shownOver_ && process != getpid();
}

void FileNamePanel::confirmName() {
    const auto name = storableName(view_->enteredText(), ext_);
    if (!name)
        view_->showHint(messages::invalidName);
    else if (finished_)
        finished_(name);
}

void FileNamePanel::cancelName() {
    if (finished_)
        finished_(std::nullopt);
}

} // namespace tavel
