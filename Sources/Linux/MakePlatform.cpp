#include "Linux/HeadlessPlatform.h"
#include "Linux/X11Platform.h"

namespace tavel {

std::unique_ptr<Platform> makePlatform() {
    if (auto connection = X11Connection::open(nullptr, X11Selections::atomNames()))
        return std::make_unique<X11Platform>(std::move(connection));
    return std::make_unique<HeadlessPlatform>();
}

} // namespace tavel
