#include "Linux/X11Platform.h"

#include "Linux/Base/Modules.h"
#include "Linux/Base/System.h"
#include "Linux/Panel/ProcessNamePanelView.h"
#include "Linux/X11/Selections/X11Pasteboard.h"

#include <utility>

namespace tavel {

X11Platform::X11Platform(std::unique_ptr<X11Connection> connection)
    : selections_(std::make_shared<X11Selections>(std::move(connection), TransferTimeOuts{})),
      events_(selections_),
      focusProbe_(selections_->connection(), deadline_, writeToSystemLog, modulePath("tavel-focus")),
      keyboardTap_(nullptr, eventLoop(), deadline_) {
    selections_->limitBy(deadline_);
}

std::shared_ptr<Pasteboard> X11Platform::openPasteboard(const std::optional<std::string>& name) {
    return std::make_shared<X11Pasteboard>(selections_, name);
}

std::unique_ptr<NamePanelView> X11Platform::makeNamePanelView(const NamePanelTexts& texts,
                                                              NamePanelActions actions) {
    return makeProcessNamePanelView(texts, actions, writeToSystemLog);
}

bool X11Platform::servesContents() {
    return selections_->isServing();
}

void X11Platform::handOverContents() {
    selections_->handOver();
}

} // namespace tavel
