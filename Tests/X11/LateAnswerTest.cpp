#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

/// An owner of plain text and HTML that has not answered the first request for the text in time. It is asked
/// again for its next content.
class LateAnswer : public testing::Test {
protected:
    void SetUp() override {
        owner.offer({"UTF8_STRING", "text/html"});
        owner.on("UTF8_STRING", owner.silence());
        owner.on("text/html", owner.value("text/html", "<p>"));
        owner.take();
        EXPECT_EQ(peers.text(), std::nullopt);
        late = owner.awaitRequest("UTF8_STRING");
    }

    void answerLate() { owner.value("UTF8_STRING", "late")(late); }

    X11Peers peers{shortOwnerTimeOut()};
    ScriptedOwner owner{peers.display()};
    ScriptedOwner::Request late;
};

TEST_F(LateAnswer, isTakenOffThePropertyAndDropped) {
    answerLate();
    EXPECT_TRUE(owner.awaitDeletion(late));
}

TEST_F(LateAnswer, isNotTakenForAnotherTargetsValue) {
    owner.on("text/html", [&](const auto& request) {
        answerLate();
        owner.value("text/html", "<br>")(request);
    });
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<br>");
    EXPECT_TRUE(owner.awaitDeletion(late));
}

TEST_F(LateAnswer, isNotTakenForTheSameOwnersNewContent) {
    owner.on("UTF8_STRING", [&](const auto& request) {
        answerLate();
        owner.value("UTF8_STRING", "new")(request);
    });
    owner.take();
    EXPECT_EQ(peers.text(), "new");
    EXPECT_TRUE(owner.awaitDeletion(late));
}

TEST_F(LateAnswer, isNotTakenForAnotherOwnersContent) {
    ScriptedOwner next(peers.display());
    next.offer({"UTF8_STRING"});
    next.on("UTF8_STRING", [&](const auto& request) {
        answerLate();
        owner.atom("ROUND_TRIP"); // the late answer is on its way before the next owner's
        next.value("UTF8_STRING", "next")(request);
    });
    next.take();
    EXPECT_EQ(peers.text(), "next");
    EXPECT_TRUE(owner.awaitDeletion(late));
}

TEST_F(LateAnswer, inIncrementsIsTakenToItsEnd) {
    owner.announce(late, 1);
    EXPECT_TRUE(owner.sendIncrements(late, "UTF8_STRING", {"one", "two", "three"}));
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>");
}

TEST_F(LateAnswer, inIncrementsDoesNotMixWithAnother) {
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.announce(late, 1);
        owner.announce(request, 1);
        for (const char* const part : {"one,", "two,", "three"}) {
            owner.awaitDeletion(late);
            owner.put(late, "UTF8_STRING", "late");
            owner.awaitDeletion(request);
            owner.put(request, "UTF8_STRING", part);
        }
        owner.sendIncrements(late, "UTF8_STRING", {});
        owner.sendIncrements(request, "UTF8_STRING", {});
    });
    owner.take();
    EXPECT_EQ(peers.text(), "one,two,three");
    EXPECT_TRUE(owner.awaitDeletion(late));
}

TEST_F(LateAnswer, thatRefusesIsNotTakenForTheNextRequestsRefusal) {
    owner.on("UTF8_STRING", [&](const auto& request) {
        owner.refuse(late);
        owner.value("UTF8_STRING", "in time")(request);
    });
    owner.take();
    EXPECT_EQ(peers.text(), "in time");
}

TEST(LateAnswers, toMoreReadsThanThereArePropertiesDoNotDisturbTheNext) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::milliseconds(20);
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offerValue("UTF8_STRING", "value");
    owner.on("UTF8_STRING", owner.silence());
    constexpr std::size_t reads = 40;
    while (owner.countOf("UTF8_STRING") < reads) {
        owner.take();
        EXPECT_EQ(peers.text(), std::nullopt);
    }
    const auto all = owner.requests();
    for (const auto& request : all) {
        if (request.targetName == "UTF8_STRING")
            owner.value("UTF8_STRING", "late")(request);
    }
    for (const auto& request : all)
        EXPECT_TRUE(owner.awaitDeletion(request));
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "in time"));
    std::optional<std::string> text;
    for (int i = 0; i < 100 && !text; ++i) {
        owner.take(); // on a busy machine, an answer within the short time-out may need several attempts
        text = peers.text();
    }
    EXPECT_EQ(text, "in time");
}

// A refusal names no property. It must count for the awaited request, not for the late one.
TEST(LateAnswers, doNotKeepTheNextRequestsRefusalFromBeingUnderstood) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::seconds(2);
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING"});
    owner.on("UTF8_STRING", owner.silence());
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
    owner.on("UTF8_STRING", [&](const auto& request) { owner.refuse(request); });
    // Four refusals take less time than one time-out.
    EXPECT_LT(durationOf([&] {
                  for (int i = 0; i < 4; ++i) {
                      owner.take();
                      EXPECT_EQ(peers.text(), std::nullopt);
                  }
              }),
              timeOuts.ownerInactivity);
}

} // namespace

} // namespace tavel
