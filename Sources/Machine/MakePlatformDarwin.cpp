#include "Platform/Platform.h"
#include "PlatformMac/MacPlatform.h"

namespace tavel {

std::unique_ptr<Platform> makePlatform() {
    return makeMacPlatform();
}

} // namespace tavel
