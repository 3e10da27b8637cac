#include "Tests/Selections/Reading.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/Wayland/WaylandPeers.h"

#include <gmock/gmock.h>

#include <chrono>
#include <future>
#include <thread>

namespace tavel {

namespace {

/// The program's own writes, on compositors that tell of them in different ways.
class OwnContent : public testing::TestWithParam<Compositor::Options> {
protected:
    WaylandPeers peers{longTimeOuts(), GetParam()};
    CompositorOwner owner{peers.compositor()};
};

TEST_P(OwnContent, countsOnceAndIsKnown) {
    for (std::int64_t round = 1; round <= 3; ++round) {
        const PasteboardItem item{{plainText, Bytes::copyOf("text " + std::to_string(round))}};
        EXPECT_EQ(peers.board().replaceWithItems({&item, 1}), round);
        peers.settle();
        EXPECT_EQ(peers.board().changeCount(), round);
        EXPECT_EQ(peers.board().noticedChangeCount(), round);
        peers.program().run([&] {
            EXPECT_TRUE(peers.board().string(plainText, 100)) << "which no other program is asked for";
        });
        EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget),
                  "text " + std::to_string(round));
    }
}

// As clipboard managers do, to keep the content.
TEST_P(OwnContent, isReplacedByAnOfferOfTheSameTypes) {
    peers.write(plainText, "own");
    const auto types = peers.compositor().typesOf(Compositor::Kind::clipboard);
    ASSERT_TRUE(types);
    owner.offer(*types);
    owner.on(plainTarget, owner.value("kept"));
    owner.on("UTF8_STRING", owner.value("kept"));
    owner.take();
    EXPECT_EQ(peers.board().changeCount(), GetParam().timesTold == 1 ? 2 : 3);
    EXPECT_EQ(peers.text(), "kept");
    EXPECT_FALSE(peers.isServing());
}

TEST_P(OwnContent, isGoneWhenItsOwnerIsReplacedByNobody) {
    peers.write(plainText, "own");
    owner.take();
    owner.release();
    peers.settle();
    EXPECT_TRUE(peers.board().types().empty());
    EXPECT_FALSE(peers.isServing());
}

INSTANTIATE_TEST_SUITE_P(Compositor, OwnContent,
                         testing::Values(Compositor::Options{}, Compositor::Options{.tellsSetter = false},
                                         Compositor::Options{.timesTold = 2}));

/// While the compositor hangs, requests pile up, and what happens at the compositor comes before them.
class SimultaneousOffer : public testing::Test {
protected:
    WaylandPeers peers{longTimeOuts()};
    CompositorOwner owner{peers.compositor()};
};

TEST_F(SimultaneousOffer, ofTheSameTypesIsNotTakenForTheOneThatFollows) {
    peers.write(plainText, "old");
    owner.offer(*peers.compositor().typesOf(Compositor::Kind::clipboard));
    peers.compositor().hang();
    auto writing = std::async(std::launch::async, [&] { peers.write(plainText, "new"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // deliberate: the request is on its way
    owner.take();
    peers.compositor().goOn();
    writing.get();
    EXPECT_EQ(peers.board().changeCount(), 3);
    EXPECT_EQ(peers.text(), "new");
    EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget), "new");
}

TEST_F(SimultaneousOffer, ofAnotherProgramLeavesBothOfOneMind) {
    const auto other = peers.makeProgram();
    const auto theirs = other->open(std::nullopt);
    peers.write(plainText, "old");
    const std::int64_t before = theirs->changeCount();
    const auto write = [](Pasteboard& board, const char* text) {
        const PasteboardItem item{{plainText, Bytes::copyOf(text)}};
        EXPECT_TRUE(board.replaceWithItems({&item, 1}));
    };
    peers.compositor().hang();
    auto writing = std::async(std::launch::async, [&] { write(peers.board(), "ours"); });
    auto writingToo = std::async(std::launch::async, [&] { write(*theirs, "theirs"); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // deliberate: the requests are on their way
    peers.compositor().goOn();
    writing.get();
    writingToo.get();
    EXPECT_EQ(peers.board().changeCount(), 3);
    EXPECT_EQ(theirs->changeCount(), before + 2);
    const std::string text = peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget);
    EXPECT_EQ(peers.text(), text);
    EXPECT_EQ(theirs->string(plainText, 100)->view(), text);
}

} // namespace

} // namespace tavel
