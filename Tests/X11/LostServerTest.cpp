#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <csignal>
#include <ctime>

namespace tavel {

namespace {

using testing::IsEmpty;

std::chrono::nanoseconds threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

/// Checks all operations of a pasteboard without a server.
void expectNothing(X11Peers& peers, std::int64_t count) {
    Pasteboard& board = peers.board();
    EXPECT_THAT(board.types(), IsEmpty());
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.data("public.png"), std::nullopt);
    EXPECT_THAT(board.files(everyFile).paths, IsEmpty());
    EXPECT_EQ(board.changeCount(), count);
    const PasteboardValue value{"public.utf8-plain-text", PasteboardValue::Form::text, Bytes::copyOf("text")};
    EXPECT_FALSE(board.replaceWithValues({&value, 1}));
    const PasteboardItem item{{"public.png", Bytes::copyOf("x")}};
    EXPECT_FALSE(board.replaceWithItems({&item, 1}));
    EXPECT_FALSE(board.replaceWithItems({}));
    EXPECT_FALSE(board.addTypes(item));
    EXPECT_EQ(board.noticedChangeCount(), count);
    EXPECT_FALSE(peers.isServing());
    EXPECT_THAT(peers.program().open("another")->types(), IsEmpty());
}

TEST(LostServer, whileNothingHappensLeavesAProgramThatGoesOn) {
    X11Peers peers(longTimeOuts());
    peers.write("public.utf8-plain-text", "text");
    const auto count = peers.board().changeCount();
    peers.server().stop();
    expectNothing(peers, count);
}

TEST(LostServer, isNoticedByItselfAndNoReasonToSpin) {
    X11Peers peers(longTimeOuts());
    peers.server().stop();
    waitUntil(
        [&] {
            bool isLost = false;
            peers.program().run([&] { isLost = peers.program().selections().connection().isLost(); });
            return isLost;
        },
        atOnce);
    std::chrono::nanoseconds before{};
    std::chrono::nanoseconds after{};
    constexpr std::chrono::milliseconds watched{500};
    peers.program().run([&] { before = threadTime(); });
    std::this_thread::sleep_for(watched); // deliberate: measures an idle program
    peers.program().run([&] { after = threadTime(); });
    EXPECT_LT(after - before, watched / 2);
}

TEST(LostServer, duringAReadEndsItAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto&) { kill(peers.server().processIdentifier(), SIGTERM); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    expectNothing(peers, 1);
}

TEST(LostServer, duringAReadInIncrementsEndsItAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 1);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "half");
        owner.awaitDeletion(request);
        kill(peers.server().processIdentifier(), SIGTERM);
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    expectNothing(peers, 1);
}

TEST(LostServer, duringAReadOfTheTargetsEndsItAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.on("TARGETS", [&](const auto&) { kill(peers.server().processIdentifier(), SIGTERM); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_THAT(peers.board().types(), IsEmpty()); }), atOnce);
    expectNothing(peers, 1);
}

TEST(LostServer, whileARequestorIsServedEndsTheServing) {
    X11Peers peers(longTimeOuts());
    peers.write("public.png", distinctBytes(std::size_t{30} << 20));
    ScriptedRequestor requestor(peers.display());
    ASSERT_TRUE(requestor.convert("image/png"));
    requestor.takeProperty();
    EXPECT_TRUE(requestor.awaitProperty());
    EXPECT_TRUE(peers.isServing());
    peers.server().stop();
    expectNothing(peers, 1);
}

} // namespace

} // namespace tavel
