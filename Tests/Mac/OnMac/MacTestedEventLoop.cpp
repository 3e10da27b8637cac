#include "Mac/Application.h"
#include "Mac/MacEventLoop.h"
#include "Tests/Base/TestedEventLoop.h"

namespace tavel {

std::unique_ptr<EventLoop> makeTestedEventLoop() {
    becomeAccessoryApplication();
    return std::make_unique<MacEventLoop>();
}

} // namespace tavel
