#include "PlatformX11/X11Platform.h"

#include "PlatformPanel/OnDemandNamePanelView.h"
#include "PlatformX11/X11Pasteboard.h"
#include "Support/Module.h"

#include <utility>

namespace tavel {

X11Platform::X11Platform(std::unique_ptr<X11Connection> connection)
    : selections_(std::make_shared<X11Selections>(std::move(connection), X11Selections::Patience{})),
      events_(selections_), focusProbe_(
                                selections_->connection(), deadline_, [this](const auto& line) { log(line); },
                                modulePath("tavel-focus")),
      keyboardTap_(nullptr, base_.eventLoop(), deadline_) {
    selections_->limitBy(deadline_);
}

std::shared_ptr<Pasteboard> X11Platform::openPasteboard(const std::optional<std::string>& name) {
    return std::make_shared<X11Pasteboard>(selections_, name);
}

std::unique_ptr<NamePanelView> X11Platform::makeNamePanelView(const NamePanelTexts& texts,
                                                              NamePanelActions actions) {
    return makeOnDemandNamePanelView(texts, actions, [this](const auto& line) { log(line); });
}

bool X11Platform::servesContents() {
    return selections_->isServing();
}

void X11Platform::handOverContents() {
    selections_->handOver();
}

} // namespace tavel
