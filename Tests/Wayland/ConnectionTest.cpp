#include "Tests/Selections/Checks.h"
#include "Tests/Selections/Reading.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/Wayland/WaylandPeers.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

namespace tavel {

namespace {

std::shared_ptr<WaylandSelections> openOn(const Compositor& compositor) {
    return openSelections(compositor.display(), longTimeOuts());
}

/// Why there is no connection to that compositor.
std::string refusalOf(const Compositor& compositor) {
    std::string refusal;
    EXPECT_EQ(openSelections(compositor.display(), longTimeOuts(), &refusal), nullptr);
    return refusal;
}

TEST(Connection, isNotMadeWithoutDataControlOrASeat) {
    const Compositor bare({.offersExt = false, .offersWlr = false});
    EXPECT_EQ(refusalOf(bare), "the compositor at " + bare.display() +
                                   " offers no data control (ext-data-control-v1 or "
                                   "wlr-data-control-unstable-v1)");
    const Compositor seatless({.hasSeat = false});
    EXPECT_EQ(refusalOf(seatless),
              "the compositor at " + seatless.display() + " has no seat, to which a clipboard belongs");
}

TEST(Connection, isNotMadeToACompositorThatHangs) {
    Compositor compositor;
    compositor.hang();
    std::string refusal;
    EXPECT_LT(durationOf([&] { refusal = refusalOf(compositor); }), atOnce);
    EXPECT_EQ(refusal, "the compositor at " + compositor.display() + " does not answer");
}

TEST(Connection, prefersExtDataControl) {
    const auto selections = openOn(Compositor());
    ASSERT_NE(selections, nullptr);
    EXPECT_STREQ(selections->connection().protocol(), "ext_data_control_manager_v1");
}

TEST(Connection, hasThePrimarySelectionWhereItIsOffered) {
    const Compositor second({.offersExt = false});
    const Compositor first({.offersExt = false, .hasPrimary = false});
    EXPECT_TRUE(openOn(second)->has(otherSelection));
    EXPECT_FALSE(openOn(first)->has(otherSelection));
    EXPECT_TRUE(openOn(first)->has(std::nullopt));
    EXPECT_FALSE(openOn(second)->has("another"));
}

/// On each version of wlr-data-control alone.
class WlrDataControl : public testing::TestWithParam<bool> {};

TEST_P(WlrDataControl, readsAndWrites) {
    WaylandPeers peers(longTimeOuts(), {.offersExt = false, .hasPrimary = GetParam()});
    CompositorOwner owner(peers.compositor());
    peers.program().run([&] {
        EXPECT_STREQ(peers.program().selections().connection().protocol(), "zwlr_data_control_manager_v1");
    });
    owner.offerValue(plainTarget, "theirs");
    owner.take();
    EXPECT_EQ(peers.text(), "theirs");
    peers.write(plainText, "ours");
    EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget), "ours");
    EXPECT_EQ(peers.board().changeCount(), 2);
}

INSTANTIATE_TEST_SUITE_P(HasPrimary, WlrDataControl, testing::Bool());

TEST(Connection, isLostWithTheEventFinished) {
    WaylandPeers peers(longTimeOuts());
    peers.write(plainText, "text");
    peers.compositor().finishDevices();
    expectNothing(peers, 1);
}

TEST(Connection, toACompositorThatHangsAnswersWithWhatIsKnownAndGoesOnAfterwards) {
    WaylandPeers peers(longTimeOuts());
    CompositorOwner owner(peers.compositor());
    owner.offerValue(plainTarget, "before");
    owner.take();
    EXPECT_EQ(peers.text(), "before");
    peers.compositor().hang();
    const PasteboardItem item{{plainText, Bytes::copyOf("never")}};
    EXPECT_LT(durationOf([&] {
                  EXPECT_EQ(peers.board().changeCount(), 1);
                  EXPECT_EQ(peers.board().replaceWithItems({&item, 1}), std::nullopt);
                  EXPECT_EQ(peers.board().changeCount(), 1);
              }),
              atOnce);
    peers.compositor().goOn();
    waitUntil([&] { return peers.compositor().typesOf(Compositor::Kind::clipboard) == std::nullopt; },
              atOnce); // the write that failed was told, and withdrawn
    std::this_thread::sleep_for(std::chrono::milliseconds(100)); // deliberate: nothing is left to be told
    EXPECT_EQ(peers.board().noticedChangeCount(), 1);
    peers.write(plainText, "ours");
    EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget), "ours");
    owner.offerValue(plainTarget, "after");
    owner.take();
    EXPECT_EQ(peers.text(), "after");
}

} // namespace

} // namespace tavel
