#include "Tests/X11/Reading.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <chrono>
#include <cstdint>
#include <thread>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

constexpr auto mark = "net.example.mark";
constexpr auto secondMark = "net.example.second-mark";
constexpr std::size_t longestMark = 10;

class NoticedContent : public testing::Test {
protected:
    /// Has the marks come with the types, and notes each content that the program is told of.
    void watch() {
        peers.board().watch({{mark, longestMark}, {secondMark, longestMark}}, [this] {
            noticed_.push_back(peers.board().noticedChangeCount());
            const auto value = peers.board().string(mark, longestMark);
            marks_.push_back(value ? std::string(value->view()) : "");
        });
    }

    /// Waits until the program has been told of so many contents, and has had the time to be told twice.
    std::vector<std::int64_t> noticed(std::size_t count) {
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

    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
    std::vector<std::int64_t> noticed_; // on the program's thread
    std::vector<std::string> marks_;
};

TEST_F(NoticedContent, isTheOneBeforeAsLongAsTheTypesAreUnknown) {
    owner.on("TARGETS", owner.silence());
    owner.take();
    const auto request = owner.awaitRequest("TARGETS");
    peers.settle();
    EXPECT_EQ(peers.board().changeCount(), 1);
    EXPECT_EQ(peers.board().noticedChangeCount(), 0);
    peers.program().run([&] { EXPECT_THAT(peers.board().types(), IsEmpty()); });
    owner.atoms("ATOM", {owner.atom("UTF8_STRING")})(request);
    awaitNoticed(peers.board(), 1);
    peers.program().run([&] { EXPECT_THAT(peers.board().types(), ElementsAre(plainText)); });
}

TEST_F(NoticedContent, hasTheValuesThatAreToComeWithTheTypes) {
    watch();
    owner.offer({mark, "UTF8_STRING"});
    owner.on(mark, owner.value("UTF8_STRING", "marked"));
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

TEST_F(NoticedContent, hasTheBeginningOfALongValueOfWhichTheWholeCanBeGathered) {
    watch();
    owner.offer({mark});
    owner.on(mark, owner.value("UTF8_STRING", "longer than the limit"));
    owner.take();
    EXPECT_THAT(noticed(1), ElementsAre(1));
    EXPECT_THAT(marks_, ElementsAre("longer than"));
    Reading reading(peers, {mark});
    EXPECT_THAT(reading.values(), ElementsAre(Optional(std::string("longer than the limit"))));
}

TEST_F(NoticedContent, isToldOfOnceWhoeverWroteIt) {
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
TEST_F(NoticedContent, ofAnOwnerThatIsSilentForAValueCostsOneTimeOut) {
    X11Peers hasty(shortOwnerTimeOut());
    ScriptedOwner silent(hasty.display());
    hasty.board().watch({{mark, longestMark}, {secondMark, longestMark}}, [] {});
    silent.offer({mark, secondMark, "UTF8_STRING"});
    for (const char* const target : {mark, secondMark, "UTF8_STRING"})
        silent.on(target, silent.silence());
    silent.take();
    awaitNoticed(hasty.board(), 1);
    Reading reading(hasty, {plainText});
    EXPECT_THAT(reading.values(), ElementsAre(std::nullopt));
    EXPECT_EQ(silent.countOf(mark), 1U);
    EXPECT_EQ(silent.countOf(secondMark) + silent.countOf("UTF8_STRING"), 0U);
}

// No content's targets are ever known here, and no time-out passes.
TEST_F(NoticedContent, movesWhileAProgramClaimsTheSelectionAgainAndAgain) {
    watch();
    owner.on("TARGETS", owner.silence());
    const auto end = std::chrono::steady_clock::now() + atOnce;
    std::size_t told = 0;
    while (told < 3 && std::chrono::steady_clock::now() < end) {
        xcb_set_selection_owner(owner.connection(), owner.window(), owner.atom("CLIPBOARD"),
                                XCB_CURRENT_TIME);
        xcb_flush(owner.connection());
        std::this_thread::sleep_for(std::chrono::microseconds(500));
        peers.program().run([&] { told = noticed_.size(); });
    }
    EXPECT_EQ(told, 3U);
    owner.offerValue("UTF8_STRING", "last");
    owner.take();
    awaitNoticed(peers.board(), peers.board().changeCount());
    EXPECT_EQ(peers.text(), "last");
}

} // namespace

} // namespace tavel
