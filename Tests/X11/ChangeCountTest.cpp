#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

TEST(ChangeCountOnX11, staysWhenTheOwnersWindowIsDestroyed) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    EXPECT_EQ(peers.text(), "text");
    owner.destroyWindow();
    EXPECT_EQ(peers.board().changeCount(), 1);
    EXPECT_TRUE(peers.board().types().empty());
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.board().noticedChangeCount(), 1);
}

TEST(ChangeCountOnX11, staysWhenNobodyLetsNothingGo) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.release();
    EXPECT_EQ(peers.board().changeCount(), 0);
    EXPECT_TRUE(peers.board().types().empty());
    EXPECT_EQ(peers.board().noticedChangeCount(), 0);
}

} // namespace

} // namespace tavel
