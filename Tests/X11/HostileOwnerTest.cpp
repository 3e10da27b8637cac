#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(HostileOwner, whoNeverAnswersForItsTargetsHasNoTypesAndIsNotAskedAgain) {
    X11Peers peers(shortOwnerTimeOut());
    ScriptedOwner owner(peers.display());
    owner.on("TARGETS", owner.silence());
    owner.take();
    EXPECT_THAT(peers.board().types(), IsEmpty());
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_THAT(peers.board().types(), IsEmpty());
    EXPECT_EQ(owner.requests().size(), 1U);
}

TEST(HostileOwner, whoRefusesEverythingDoesSoAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_THAT(peers.board().types(), IsEmpty()); }), atOnce);
}

TEST(HostileOwner, whoRefusesWhatItOffersGivesNothingAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "STRING"});
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    EXPECT_EQ(owner.countOf("UTF8_STRING"), 1U);
    EXPECT_EQ(owner.countOf("STRING"), 1U);
}

TEST(HostileOwner, whoRefusesOneFormOfTheTextIsAskedForTheNext) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "STRING"});
    owner.on("STRING", owner.value("STRING", "abc"));
    owner.take();
    EXPECT_EQ(peers.text(), "abc");
}

TEST(HostileOwner, whoAnnouncesAPropertyThatIsNotThereGivesNothingAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) { owner.notify(request); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
}

TEST(HostileOwner, whoSetsThePropertyTwiceBeforeTheAnswerGivesTheLatterValue) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.put(request, "UTF8_STRING", "first");
        owner.put(request, "UTF8_STRING", "second");
        owner.notify(request);
    });
    owner.take();
    EXPECT_EQ(peers.text(), "second");
}

TEST(HostileOwner, whoSetsThePropertyAgainAfterTheAnswerDoesNotDisturbTheNextRead) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "text/html"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.value("UTF8_STRING", "value")(request);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "afterthought");
        owner.notify(request);
    });
    owner.on("text/html", owner.value("text/html", "<p>"));
    owner.take();
    EXPECT_EQ(peers.text(), "value");
    EXPECT_EQ(peers.data("public.html"), "<p>");
    EXPECT_EQ(peers.text(), "value");
    const auto last = owner.awaitRequest("UTF8_STRING", 2);
    EXPECT_EQ(peers.data("public.html"), "<p>");
    EXPECT_TRUE(owner.awaitDeletion(last));
}

TEST(HostileOwner, whoAnswersTwiceIsTakenAtItsFirstWord) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.put(request, "UTF8_STRING", "value");
        owner.notify(request);
        owner.refuse(request);
        owner.notify(request);
    });
    owner.take();
    EXPECT_EQ(peers.text(), "value");
    // The surplus answers have the time of the first request. The next content's request has a later one.
    owner.offerValue("UTF8_STRING", "next");
    while (owner.ownedSince() <= owner.awaitRequest("UTF8_STRING").time)
        owner.take();
    EXPECT_EQ(peers.text(), "next");
}

TEST(HostileOwner, whoDestroysItsWindowWithoutAnAnswerEndsTheReadAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto&) { owner.destroyWindow(); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
}

// Events of a third program do not count as progress of the owner.
TEST(HostileOwner, whoIsSilentIsGivenUpThoughOtherEventsComeMeanwhile) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::milliseconds(200);
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    ScriptedOwner noise(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", owner.silence());
    owner.take();
    std::atomic<bool> isOver = false;
    auto making = std::async(std::launch::async, [&] {
        const auto request = owner.awaitRequest("UTF8_STRING");
        auto elsewhere = request;
        elsewhere.property = noise.atom("NOISE");
        const auto end = std::chrono::steady_clock::now() + 2 * atOnce;
        while (!isOver && std::chrono::steady_clock::now() < end) {
            noise.put(elsewhere, "NOISE", "noise");
            noise.atom("ROUND_TRIP");
            std::this_thread::sleep_for(std::chrono::milliseconds(5));
        }
    });
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    isOver = true;
    making.get();
}

// An endless stream of events does not extend the time that few bytes deserve.
TEST(HostileOwner, whoFloodsTheAwaitedPropertyIsGivenUpAsTooSlow) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::seconds(1);
    timeOuts.slowestOwner = std::size_t{1} << 30;
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    std::atomic<bool> isOver = false;
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 1);
        // Ends by itself if the reader never gives up.
        const auto end = std::chrono::steady_clock::now() + atOnce + std::chrono::seconds(3);
        const xcb_atom_t type = owner.atom("UTF8_STRING");
        while (!isOver && !owner.isEnding() && std::chrono::steady_clock::now() < end) {
            for (int i = 0; i < 3; ++i)
                xcb_change_property(owner.connection(), XCB_PROP_MODE_APPEND, request.requestor,
                                    request.property, type, 8, 1, "x");
            owner.atom("ROUND_TRIP"); // bounds the backlog in the server
        }
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    isOver = true;
}

TEST(HostileOwner, whoDatesItsRefusalOtherwiseIsTakenToRefuseAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) { owner.refuse(request, XCB_CURRENT_TIME); });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
}

} // namespace

} // namespace tavel
