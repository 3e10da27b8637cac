#include "Tests/X11/X11AgentTest.h"

#include <unistd.h>

namespace tavel {

namespace {

class AgentAtRest : public X11AgentTest {};

TEST_F(AgentAtRest, hasNoTick) {
    AgentProcess& watcher = start(x11Options({"--parent-pid", std::to_string(getpid())}));
    copyWithXclip("hi");
    EXPECT_EQ(watcher.nextMessage(), announcement(1));
    EXPECT_EQ(watcher.nextMessage(), textEvent("aGk", 2, 1));
    watcher.waitUntilAtRest();
}

} // namespace

} // namespace tavel
