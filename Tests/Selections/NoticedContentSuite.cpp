#include "Tests/Selections/Reading.h"
#include "Tests/Selections/SelectionSuites.h"

#include <gmock/gmock.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr auto mark = "net.example.mark";
constexpr auto secondMark = "net.example.second-mark";
constexpr std::size_t longestMark = 10;

} // namespace

/// Has the marks come with the types, and notes each content that the program is told of.
void NoticedContent::watch() {
    peers.board().watch({{mark, longestMark}, {secondMark, longestMark}}, [this] {
        noticed_.push_back(peers.board().noticedChangeCount());
        const auto value = peers.board().string(mark, longestMark);
        marks_.push_back(value ? std::string(value->view()) : "");
    });
}

/// Waits until the program has been told of so many contents, and has had the time to be told twice.
std::vector<std::int64_t> NoticedContent::noticed(std::size_t count) {
    std::vector<std::int64_t> noticed;
    waitUntil(
        [&] {
            peers.program().run([&] { noticed = noticed_; });
            return noticed.size() >= count;
        },
        atOnce);
    for (int pass = 0; pass < 5; ++pass)
        peers.settle();
    peers.program().run([&] { noticed = noticed_; });
    return noticed;
}

TEST_P(NoticedContent, hasTheValuesThatAreToComeWithTheTypes) {
    watch();
    owner.offer({mark, "UTF8_STRING"});
    owner.give(mark, "marked");
    owner.take();
    EXPECT_THAT(noticed(1), ElementsAre(1));
    EXPECT_THAT(marks_, ElementsAre("marked"));
    peers.program().run([&] {
        const auto value = peers.board().string(mark, longestMark);
        ASSERT_TRUE(value) << "also afterwards";
        EXPECT_EQ(value->view(), "marked");
    });
    EXPECT_EQ(owner.countOf("UTF8_STRING"), 0U);
}

TEST_P(NoticedContent, hasTheBeginningOfALongValueOfWhichTheWholeCanBeGathered) {
    watch();
    owner.offer({mark});
    owner.give(mark, "longer than the limit");
    owner.take();
    EXPECT_THAT(noticed(1), ElementsAre(1));
    EXPECT_THAT(marks_, ElementsAre("longer than"));
    Reading reading(peers, {mark});
    EXPECT_THAT(reading.values(), ElementsAre(Optional(std::string("longer than the limit"))));
}

TEST_P(NoticedContent, isToldOfOnceWhoeverWroteIt) {
    watch();
    owner.offerValue(mark, "other's");
    owner.take();
    EXPECT_THAT(noticed(1), ElementsAre(1));
    owner.take();
    EXPECT_THAT(noticed(2), ElementsAre(1, 2));
    peers.write(mark, "own");
    EXPECT_THAT(noticed(3), ElementsAre(1, 2, 3));
    EXPECT_THAT(marks_, ElementsAre("other's", "other's", "own"));
}

// What comes with the types is needed before anybody learns of the content: it must not cost a time-out each.
TEST_P(NoticedContent, ofAnOwnerThatIsSilentForAValueCostsOneTimeOut) {
    const auto hasty = start(shortOwnerTimeOut());
    const auto silent = hasty->makeOwner();
    hasty->board().watch({{mark, longestMark}, {secondMark, longestMark}}, [] {});
    silent->offer({mark, secondMark, "UTF8_STRING"});
    for (const char* const target : {mark, secondMark, "UTF8_STRING"})
        silent->beSilent(target);
    silent->take();
    awaitNoticed(hasty->board(), 1);
    Reading reading(*hasty, {plainText});
    EXPECT_THAT(reading.values(), ElementsAre(std::nullopt));
    EXPECT_EQ(silent->countOf(mark), 1U);
    EXPECT_EQ(silent->countOf(secondMark) + silent->countOf("UTF8_STRING"), 0U);
}

} // namespace tavel
