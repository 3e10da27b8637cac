#include "Platform/Platform.h"
#include "PlatformX11/X11Platform.h"

namespace tavel {

std::unique_ptr<Platform> makePlatform() {
    if (auto connection = X11Connection::open(nullptr))
        return std::make_unique<X11Platform>(std::move(connection));
    return std::make_unique<HeadlessPlatform>();
}

} // namespace tavel
