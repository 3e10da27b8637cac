#include "Platform/Platform.h"
#include "PlatformHeadless/HeadlessPlatform.h"

namespace tavel {

std::unique_ptr<Platform> makePlatform() {
    return std::make_unique<HeadlessPlatform>();
}

} // namespace tavel
