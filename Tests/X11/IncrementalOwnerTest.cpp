#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <future>

namespace tavel {

namespace {

constexpr std::size_t mebibyte = std::size_t{1} << 20;

std::vector<std::string> partsOf(const std::string& bytes, std::size_t size) {
    std::vector<std::string> parts;
    for (std::size_t offset = 0; offset < bytes.size(); offset += size)
        parts.push_back(bytes.substr(offset, size));
    return parts;
}

TEST(IncrementalOwner, plainPropertyOf15MebibytesArrivesAsItIs) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    const std::string bytes = distinctBytes(15 * mebibyte);
    owner.offerValue("image/png", bytes);
    owner.take();
    EXPECT_TRUE(peers.data("public.png") == bytes);
}

TEST(IncrementalOwner, incrementsOf20MebibytesInAllArriveAsTheyAre) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    const std::string bytes = distinctBytes(20 * mebibyte);
    owner.offer({"image/png"});
    owner.on("image/png", owner.increments("image/png", partsOf(bytes, mebibyte - 1)));
    owner.take();
    EXPECT_TRUE(peers.data("public.png") == bytes);
}

TEST(IncrementalOwner, incrementsThatNeedSeveralReadsArriveAsTheyAre) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    const std::string bytes = distinctBytes(20 * mebibyte);
    owner.offer({"image/png"});
    owner.on("image/png", owner.increments("image/png", partsOf(bytes, 9 * mebibyte + 3)));
    owner.take();
    EXPECT_TRUE(peers.data("public.png") == bytes);
}

class Hint : public testing::TestWithParam<std::uint32_t> {};

TEST_P(Hint, isNotTrusted) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, GetParam());
        owner.sendIncrements(request, "UTF8_STRING", {"one,", "two,", "three"});
    });
    owner.take();
    EXPECT_EQ(peers.text(), "one,two,three");
}

INSTANTIATE_TEST_SUITE_P(IncrementalOwner, Hint, testing::Values(0U, 1U, 1'000'000U, 0xFFFFFFFFU));

TEST(IncrementalOwner, hintWithoutASizeIsAHint) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.put(request, "INCR", {}, 32);
        owner.notify(request);
        owner.sendIncrements(request, "UTF8_STRING", {"text"});
    });
    owner.take();
    EXPECT_EQ(peers.text(), "text");
}

TEST(IncrementalOwner, hintInAnotherFormatIsAHint) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.put(request, "INCR", "13 bytes long", 8);
        owner.notify(request);
        owner.sendIncrements(request, "UTF8_STRING", {"text"});
    });
    owner.take();
    EXPECT_EQ(peers.text(), "text");
}

TEST(IncrementalOwner, endWithoutAnyIncrementIsAnEmptyText) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", owner.increments("UTF8_STRING", {}));
    owner.take();
    EXPECT_EQ(peers.text(), "");
}

TEST(IncrementalOwner, whoChangesTheTypeHalfWayGivesNothingAndIsLetFinish) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    std::promise<bool> finished;
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 1);
        bool taken = owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "text");
        taken = taken && owner.awaitDeletion(request);
        owner.put(request, "STRING", "text");
        taken = taken && owner.awaitDeletion(request);
        finished.set_value(taken && owner.sendIncrements(request, "UTF8_STRING", {"text"}));
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    EXPECT_TRUE(finished.get_future().get());
}

TEST(IncrementalOwner, whoChangesTheFormatHalfWayGivesNothingAndIsLetFinish) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    std::promise<bool> finished;
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 1);
        bool taken = owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "text");
        taken = taken && owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "text", 32);
        taken = taken && owner.awaitDeletion(request);
        finished.set_value(taken && owner.sendIncrements(request, "UTF8_STRING", {"text"}));
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    EXPECT_TRUE(finished.get_future().get());
}

TEST(IncrementalOwner, whoSendsTooLittleInATimeIsGivenUp) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::seconds(1);
    timeOuts.slowestOwner = std::size_t{1} << 30;
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 1);
        while (owner.awaitDeletion(request))
            owner.put(request, "UTF8_STRING", "and so on, ");
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    // The program serves other requestors while the owner still sends.
    ScriptedOwner other(peers.display());
    other.offerValue("UTF8_STRING", "other");
    other.take();
    EXPECT_EQ(peers.text(), "other");
}

TEST(IncrementalOwner, whoGetsOnSlowlyIsWaitedFor) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::seconds(1);
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 20);
        for (int i = 0; i < 15 && owner.awaitDeletion(request); ++i) {
            std::this_thread::sleep_for(std::chrono::milliseconds(100)); // together more than the time-out
            owner.put(request, "UTF8_STRING", "x");
        }
        owner.sendIncrements(request, "UTF8_STRING", {});
    });
    owner.take();
    EXPECT_EQ(peers.text(), std::string(15, 'x'));
}

TEST(IncrementalOwner, whoStallsHalfWayGivesNothingAndCanGoOnLater) {
    X11Peers peers(shortOwnerTimeOut());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "text/html"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 20);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "half");
    });
    owner.on("text/html", owner.value("text/html", "<p>"));
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>");
    EXPECT_TRUE(owner.sendIncrements(owner.awaitRequest("UTF8_STRING"), "UTF8_STRING", {"the other half"}));
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "whole"));
    EXPECT_EQ(peers.text(), "whole");
}

TEST(IncrementalOwner, whoExitsHalfWayEndsTheReadAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 20);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "half");
        owner.awaitDeletion(request);
        owner.disconnect();
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
}

TEST(IncrementalOwner, whoDestroysItsWindowHalfWayEndsTheReadAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 20);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "half");
        owner.destroyWindow();
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
}

TEST(IncrementalOwner, whoIsReplacedHalfWayGivesNothingAndIsLetFinish) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    ScriptedOwner next(peers.display());
    next.offerValue("UTF8_STRING", "next");
    owner.offer({"UTF8_STRING"});
    std::promise<bool> finished;
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(request, 20);
        owner.awaitDeletion(request);
        owner.put(request, "UTF8_STRING", "half");
        owner.awaitDeletion(request);
        next.take();
        finished.set_value(owner.sendIncrements(request, "UTF8_STRING", {"the other half"}));
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    EXPECT_EQ(peers.text(), "next");
    EXPECT_TRUE(finished.get_future().get());
    EXPECT_EQ(peers.text(), "next");
}

} // namespace

} // namespace tavel
