#include "PlatformMac/ApplicationEvents.h"
#include "PlatformMac/MacEventLoop.h"
#include "Tests/EventLoop/TestedEventLoop.h"

namespace tavel {

std::unique_ptr<EventLoop> makeTestedEventLoop() {
    becomeAccessoryApplication();
    return std::make_unique<MacEventLoop>();
}

} // namespace tavel
