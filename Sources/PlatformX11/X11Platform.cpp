#include "PlatformX11/X11Platform.h"

#include "PlatformX11/X11Pasteboard.h"

#include <utility>

namespace tavel {

X11Platform::X11Platform(std::unique_ptr<X11Connection> connection)
    : selections_(std::make_shared<X11Selections>(std::move(connection), X11Selections::Patience{})),
      events_(selections_) {}

std::shared_ptr<Pasteboard> X11Platform::openPasteboard(const std::optional<std::string>& name) {
    return std::make_shared<X11Pasteboard>(selections_, name);
}

bool X11Platform::servesContents() {
    return selections_->isServing();
}

void X11Platform::handOverContents() {
    selections_->handOver();
}

} // namespace tavel
