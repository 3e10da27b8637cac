#include "Tests/Selections/Reading.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <chrono>
#include <thread>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class NoticedContent : public testing::Test {
protected:
    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
};

TEST_F(NoticedContent, isTheOneBeforeAsLongAsTheTypesAreUnknown) {
    owner.on("TARGETS", owner.silence());
    owner.take();
    const auto request = owner.awaitRequest("TARGETS");
    peers.settle();
    EXPECT_EQ(peers.board().changeCount(), 1);
    EXPECT_EQ(peers.board().noticedChangeCount(), 0);
    peers.program().run([&] { EXPECT_THAT(peers.board().types(), IsEmpty()); });
    owner.atoms("ATOM", {owner.atom("UTF8_STRING")})(request);
    awaitNoticed(peers.board(), 1);
    peers.program().run([&] { EXPECT_THAT(peers.board().types(), ElementsAre(plainText)); });
}

// No content's targets are ever known here, and no time-out passes.
TEST_F(NoticedContent, movesWhileAProgramClaimsTheSelectionAgainAndAgain) {
    int noticed = 0; // on the program's thread
    peers.board().watch({}, [&] { ++noticed; });
    owner.on("TARGETS", owner.silence());
    const auto end = std::chrono::steady_clock::now() + atOnce;
    int told = 0;
    while (told < 3 && std::chrono::steady_clock::now() < end) {
        xcb_set_selection_owner(owner.connection(), owner.window(), owner.atom("CLIPBOARD"),
                                XCB_CURRENT_TIME);
        xcb_flush(owner.connection());
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        peers.program().run([&] { told = noticed; });
    }
    EXPECT_EQ(told, 3);
    owner.offerValue("UTF8_STRING", "last");
    owner.take();
    awaitNoticed(peers.board(), peers.board().changeCount());
    EXPECT_EQ(peers.text(), "last");
    peers.program().run([&] { peers.board().watch({}, {}); });
}

} // namespace

} // namespace tavel
