#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <atomic>
#include <stdexcept>
#include <thread>

namespace tavel {

/// How much the operation adds to the change count. Expects both kinds of the count to agree once the content
/// is known.
std::int64_t ChangeCount::moveOf(const std::function<void()>& operation) {
    const std::int64_t before = peers.board().changeCount();
    operation();
    const std::int64_t after = peers.board().changeCount();
    peers.board().types();
    EXPECT_EQ(peers.board().noticedChangeCount(), after);
    return after - before;
}

TEST_P(ChangeCount, beginsWithNothing) {
    EXPECT_EQ(peers.board().changeCount(), 0);
    EXPECT_EQ(peers.board().noticedChangeCount(), 0);
}

TEST_P(ChangeCount, movesByOneWithAnotherProgramsCopy) {
    EXPECT_EQ(moveOf([this] { owner.take(); }), 1);
}

TEST_P(ChangeCount, movesByOneEachTimeTheSameProgramTakesTheSelectionAgain) {
    owner.take();
    EXPECT_EQ(moveOf([this] {
                  for (int i = 0; i < 5; ++i)
                      owner.take();
              }),
              5);
}

TEST_P(ChangeCount, movesWithEachOfTwoProgramsThatTakeTurns) {
    const auto other = peers.makeOwner();
    EXPECT_EQ(moveOf([&] {
                  for (int i = 0; i < 5; ++i) {
                      owner.take();
                      other->take();
                  }
              }),
              10);
}

TEST_P(ChangeCount, staysWhenTheOwnerLetsTheSelectionGo) {
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    EXPECT_EQ(moveOf([this] { owner.release(); }), 0);
    EXPECT_TRUE(peers.board().types().empty());
    EXPECT_EQ(moveOf([this] { owner.take(); }), 1);
    EXPECT_EQ(peers.text(), "text");
}

TEST_P(ChangeCount, staysWhenTheOwnerExits) {
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    EXPECT_EQ(peers.text(), "text");
    EXPECT_EQ(moveOf([this] {
                  owner.disconnect();
                  waitUntil([this] { return peers.board().types().empty(); }, atOnce);
              }),
              0);
}

TEST_P(ChangeCount, movesByOneWithTheProgramsOwnClear) {
    EXPECT_EQ(moveOf([this] { peers.board().replaceWithItems({}); }), 1);
    EXPECT_EQ(moveOf([this] { peers.board().replaceWithItems({}); }), 1);
}

TEST_P(ChangeCount, ofAClearIsTheOneThatItGives) {
    EXPECT_EQ(peers.board().replaceWithItems({}), 1);
    EXPECT_EQ(peers.board().changeCount(), 1);
    owner.take();
    EXPECT_EQ(peers.board().replaceWithItems({}), 3);
    EXPECT_EQ(peers.board().noticedChangeCount(), 3);
}

TEST_P(ChangeCount, movesByOneWithTheProgramsOwnContent) {
    using Form = PasteboardValue::Form;
    const std::array values{
        PasteboardValue{"public.utf8-plain-text", Form::text, Bytes::copyOf("text")},
        PasteboardValue{"public.html", Form::data, Bytes::copyOf("<p>")},
    };
    EXPECT_EQ(moveOf([&] { EXPECT_TRUE(peers.board().replaceWithValues(values)); }), 1);
    EXPECT_EQ(peers.text(), "text");
}

TEST_P(ChangeCount, movesByTwoWhenAnotherProgramTakesOverBetweenTwoClears) {
    peers.board().replaceWithItems({});
    EXPECT_EQ(moveOf([this] {
                  owner.take();
                  peers.board().replaceWithItems({});
              }),
              2);
}

TEST_P(ChangeCount, countsEveryTakingOfProgramsThatFightForTheSelection) {
    const auto other = peers.makeOwner();
    constexpr int times = 50;
    const std::int64_t before = peers.board().changeCount();
    std::atomic<int> taken = 0;
    const auto fight = [&taken](OwnerPeer& one) {
        for (int i = 0; i < times; ++i) {
            try {
                one.take();
                ++taken;
            } catch (const std::runtime_error&) {
                ++taken; // lost the selection again at once, or failed to take it
            }
        }
    };
    std::thread thread([&] { fight(*other); });
    int cleared = 0;
    for (int i = 0; i < times; ++i) {
        const auto beforeClear = peers.board().noticedChangeCount();
        const auto count = peers.board().replaceWithItems({});
        EXPECT_GT(count.value_or(beforeClear + 1), beforeClear);
        cleared += count ? 1 : 0;
    }
    thread.join();
    // Afterwards all programs agree on the owner.
    owner.offerValue("UTF8_STRING", "last");
    owner.take();
    EXPECT_EQ(peers.text(), "last");
    EXPECT_GT(cleared, 0);
    EXPECT_LE(peers.board().changeCount() - before, 2 * times + taken + 1);
}

TEST_P(ChangeCount, isNoticedByItselfWithoutBeingAskedFor) {
    owner.take();
    waitUntil([this] { return peers.board().noticedChangeCount() == 1; }, atOnce);
    owner.take();
    waitUntil([this] { return peers.board().noticedChangeCount() == 2; }, atOnce);
}

TEST_P(ChangeCount, isEachSelectionsOwn) {
    const auto other = peers.program().open(otherSelection);
    owner.take();
    EXPECT_EQ(peers.board().changeCount(), 1);
    EXPECT_EQ(other->changeCount(), 0);
}

} // namespace tavel
