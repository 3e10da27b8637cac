#include "Linux/X11Platform.h"

#include "Linux/Base/Modules.h"
#include "Linux/Base/System.h"
#include "Linux/Panel/ProcessNamePanelView.h"
#include "Linux/Selections/SelectionPasteboard.h"
#include "Linux/X11/Selections/SelectionName.h"
#include "Platform/PasteboardTypes.h"

#include <unistd.h>

#include <cstdlib>
#include <utility>

namespace tavel {

X11Platform::X11Platform(std::unique_ptr<X11Connection> connection)
    : selections_(std::make_shared<X11Selections>(std::move(connection), TransferTimeOuts{})),
      events_(selections_),
      focusProbe_(selections_->connection(), deadline_, writeToSystemLog, modulePath("tavel-focus")),
      keyboardTap_(nullptr, eventLoop(), deadline_) {}

std::shared_ptr<Pasteboard> X11Platform::openPasteboard(const std::optional<std::string>& name) {
    return std::make_shared<SelectionPasteboard>(selections_, name);
}

std::string X11Platform::describePasteboard(const std::optional<std::string>& name) {
    const char* const display = std::getenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe)
    return "the selection " + selectionNameOf(name) + " of the X server" +
           (display == nullptr ? std::string() : " " + std::string(display));
}

bool X11Platform::canShowNamePanel() {
    return access(namePanelProgramPath().c_str(), X_OK) == 0;
}

std::unique_ptr<NamePanelView> X11Platform::makeNamePanelView(const NamePanelTexts& texts,
                                                              NamePanelActions actions) {
    // The user's own copy: the change is reported like one of another program.
    const auto keepCopy = [selections = selections_](const std::string& text) {
        const PasteboardValue value{std::string(pasteboardType::string), PasteboardValue::Form::text,
                                    Bytes::copyOf(text)};
        SelectionPasteboard(selections, std::nullopt).replaceWithValues({&value, 1});
    };
    return makeProcessNamePanelView(texts, actions, keepCopy, writeToSystemLog);
}

bool X11Platform::servesContents() {
    return selections_->isServing();
}

void X11Platform::handOverContents() {
    selections_->letOwnersFinish();
    selections_->handOver();
}

} // namespace tavel
