#include "Tests/Selections/Checks.h"
#include "Tests/Selections/Reading.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

namespace tavel {

namespace {

TEST(ContentOnX11, staysTheOwnersIfARequiredTypeIsRefused) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "image/png"});
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
    owner.take();
    EXPECT_EQ(gatherAndAddType(peers, {plainText, "public.png"}), std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
}

} // namespace

} // namespace tavel
