#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>

namespace tavel {

using testing::ElementsAre;

TEST_P(HostileOwner, whoHangsOnTheDataGivesNothing) {
    const auto peers = start(shortOwnerTimeOut());
    const auto owner = peers->makeOwner();
    owner->offer({"UTF8_STRING"});
    owner->beSilent("UTF8_STRING");
    owner->take();
    EXPECT_THAT(peers->board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers->text(), std::nullopt);
    EXPECT_EQ(owner->countOf("UTF8_STRING"), 1U);
}

TEST_P(HostileOwner, whoExitsWithoutAnAnswerEndsTheReadAtOnce) {
    const auto peers = start(longTimeOuts());
    const auto owner = peers->makeOwner();
    owner->offer({"UTF8_STRING"});
    owner->stopAfter("UTF8_STRING", "", [&] { owner->disconnect(); });
    owner->take();
    std::optional<std::string> text;
    EXPECT_LT(durationOf([&] { text = peers->text(); }), atOnce);
    if (peers->tellsBreaksFromEnds()) {
        EXPECT_EQ(text, std::nullopt);
    } else {
        EXPECT_EQ(text.value_or(""), "");
    }
    waitUntil([&] { return peers->board().types().empty(); }, atOnce);
}

TEST_P(HostileOwner, whoIsReplacedWithoutAnAnswerEndsTheReadAtOnce) {
    const auto peers = start(longTimeOuts());
    const auto next = peers->makeOwner(); // outlives the other owner, whose thread uses it
    const auto owner = peers->makeOwner();
    next->offerValue("UTF8_STRING", "next");
    owner->offer({"UTF8_STRING"});
    owner->stopAfter("UTF8_STRING", "", [&] { next->take(); });
    owner->take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers->text(), std::nullopt); }), atOnce);
    EXPECT_EQ(peers->text(), "next");
}

TEST_P(HostileOwner, whoIsSilentForOneValueIsAskedForNoOther) {
    const auto peers = start(shortOwnerTimeOut());
    const auto owner = peers->makeOwner();
    owner->offer({"UTF8_STRING", "STRING", "text/html"});
    owner->beSilent("UTF8_STRING");
    owner->give("STRING", "never asked for");
    owner->give("text/html", "nor this");
    owner->take();
    EXPECT_EQ(peers->text(), std::nullopt);
    EXPECT_EQ(peers->data("public.html"), std::nullopt);
    EXPECT_EQ(owner->countOf("UTF8_STRING"), 1U);
    EXPECT_EQ(owner->countOf("STRING") + owner->countOf("text/html"), 0U);
    // A new content has a new time-out.
    owner->give("UTF8_STRING", "late, but there");
    owner->take();
    EXPECT_EQ(peers->text(), "late, but there");
}

} // namespace tavel
