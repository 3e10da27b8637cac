#include "Tests/Selections/Reading.h"
#include "Tests/Selections/SelectionSuites.h"

#include <gmock/gmock.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr auto html = "public.html";

} // namespace

TEST_P(Gathered, valuesAreThoseThatTheOwnerOffers) {
    owner.offer({"UTF8_STRING", "text/html"});
    owner.give("UTF8_STRING", "text");
    owner.give("text/html", "<p>");
    takeAndAwait(owner);
    Reading reading(peers, {html, "public.png", plainText});
    EXPECT_THAT(reading.values(),
                ElementsAre(Optional(std::string("<p>")), std::nullopt, Optional(std::string("text"))));
    EXPECT_EQ(owner.countOf("image/png"), 0U);
}

TEST_P(Gathered, valuesCanBeReadOnlyInTheEndOfTheirOwnGathering) {
    owner.offerValue("UTF8_STRING", "text");
    takeAndAwait(owner);
    Reading reading(peers, {plainText});
    EXPECT_THAT(reading.values(), ElementsAre(Optional(std::string("text"))));
    peers.program().run([&] { EXPECT_FALSE(peers.board().string(plainText, 100)); });
    Reading other(peers, {"public.png"});
    EXPECT_TRUE(other.isCurrent());
    EXPECT_EQ(owner.countOf("UTF8_STRING"), 1U);
}

TEST_P(Gathered, contentsThatAreReplacedEndTheGathering) {
    owner.offer({"UTF8_STRING"});
    owner.beSilent("UTF8_STRING");
    takeAndAwait(owner);
    Reading reading(peers, {plainText});
    owner.awaitRequest("UTF8_STRING");
    const auto next = peers.makeOwner();
    next->offerValue("UTF8_STRING", "next");
    next->take();
    EXPECT_FALSE(reading.isCurrent());
    EXPECT_EQ(next->countOf("UTF8_STRING"), 0U);
}

TEST_P(Gathered, contentsThatTheProgramReplacesEndTheGathering) {
    owner.offer({"UTF8_STRING"});
    owner.beSilent("UTF8_STRING");
    takeAndAwait(owner);
    Reading reading(peers, {plainText});
    owner.awaitRequest("UTF8_STRING");
    peers.write(plainText, "own");
    EXPECT_FALSE(reading.isCurrent());
}

TEST_P(Gathered, contentOfAnOwnerThatExitsIsCurrentAndWithoutTheValue) {
    owner.offer({"UTF8_STRING", "text/html"});
    owner.give("UTF8_STRING", "text");
    owner.stopAfter("text/html", "", [&] { owner.disconnect(); });
    takeAndAwait(owner);
    Reading reading(peers, {plainText, html});
    EXPECT_TRUE(reading.isCurrent());
    EXPECT_EQ(reading.values().front(), "text");
    if (peers.tellsBreaksFromEnds()) {
        EXPECT_EQ(reading.values().back(), std::nullopt);
    }
}

TEST_P(Gathered, valuesThatNobodyWantsAnyMoreKeepNobodyWaiting) {
    owner.offer({"UTF8_STRING", "text/html"});
    owner.beSilent("UTF8_STRING");
    owner.give("text/html", "<p>");
    takeAndAwait(owner);
    Reading givenUp(peers, {plainText, "public.png"});
    owner.awaitRequest("UTF8_STRING");
    givenUp.cancel();
    Reading next(peers, {html});
    EXPECT_THAT(next.values(), ElementsAre(Optional(std::string("<p>"))));
    owner.answerLate("UTF8_STRING", "late");
    peers.settle();
    EXPECT_FALSE(givenUp.isOver());
}

TEST_P(Gathered, valuesOfTwoCallersAreAskedForOneAfterTheOther) {
    owner.offer({"UTF8_STRING", "text/html"});
    owner.beSilent("UTF8_STRING");
    owner.give("text/html", "<p>");
    takeAndAwait(owner);
    Reading first(peers, {plainText});
    Reading second(peers, {html});
    owner.awaitRequest("UTF8_STRING");
    peers.settle();
    EXPECT_EQ(owner.countOf("text/html"), 0U);
    owner.answerLate("UTF8_STRING", "text");
    EXPECT_THAT(first.values(), ElementsAre(Optional(std::string("text"))));
    EXPECT_THAT(second.values(), ElementsAre(Optional(std::string("<p>"))));
}

} // namespace tavel
