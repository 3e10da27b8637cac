#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"

#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FileNames.h"
#include "TavelClipboardAgent/FilePaste/PanelPlacement.h"
#include "TavelClipboardAgent/Messages.h"

#include <utility>

namespace tavel {

std::shared_ptr<FileNamePanel> FileNamePanel::make(Platform& platform, std::string_view stem,
                                                   std::string_view ext) {
    std::shared_ptr<FileNamePanel> panel(new FileNamePanel(ext));
    // The action keeps the panel alive until it returns, because `finished_` may release the last owner.
    const auto action = [panel](void (FileNamePanel::*method)()) {
        return [weak = std::weak_ptr(panel), method] {
            if (const auto alive = weak.lock())
                (alive.get()->*method)();
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
