#include "Tests/Selections/Checks.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <csignal>

namespace tavel {

namespace {

TEST(LostXServer, duringAReadOfTheTargetsEndsItAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.on("TARGETS", [&](const auto&) { kill(peers.server().processIdentifier(), SIGTERM); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_THAT(peers.board().types(), testing::IsEmpty()); }), atOnce);
    expectNothing(peers, 1);
}

} // namespace

} // namespace tavel
