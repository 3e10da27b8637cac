#include "Linux/X11/Selections/IncomingTransfer.h"
#include "Tests/Unit/X11/Parts.h"

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <string_view>

namespace tavel {
namespace {

using State = IncomingTransfer::State;

constexpr std::size_t limit = 10;

/// A transfer whose owner has announced increments.
IncomingTransfer announced(std::size_t ofLimit = limit) {
    IncomingTransfer transfer(ofLimit, incremental);
    transfer.received(announcement());
    return transfer;
}

/// The size of this process's address space (proc(5), statm, first field).
std::size_t addressSpacePages() {
    std::ifstream file("/proc/self/statm");
    std::size_t pages = 0;
    file >> pages;
    return pages;
}

TEST(Increments, followTheirAnnouncement) {
    const IncomingTransfer transfer = announced();
    EXPECT_EQ(transfer.state(), State::increments);
    EXPECT_FALSE(transfer.isOver());
    EXPECT_TRUE(transfer.expectsIncrement());
}

TEST(Increments, makeTheValueUpToTheEmptyOne) {
    IncomingTransfer transfer = announced();
    for (const std::string_view increment : {"abc", "d", "efg"}) {
        transfer.received(part(increment));
        EXPECT_EQ(transfer.state(), State::increments);
        EXPECT_TRUE(transfer.expectsIncrement());
    }
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_TRUE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_EQ(transfer.format(), 8);
    EXPECT_EQ(transfer.takeValue().view(), "abcdefg");
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(Increments, comeInPartsThemselves) {
    IncomingTransfer transfer = announced();
    transfer.received(part("abc", 2));
    EXPECT_EQ(transfer.state(), State::increments);
    transfer.received(part("de"));
    transfer.received(part("f"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.takeValue().view(), "abcdef");
}

TEST(Increments, makeAnEmptyValueIfTheFirstIsEmpty) {
    IncomingTransfer transfer = announced();
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(Increments, giveAnEmptyValueItsTypeAndFormat) {
    IncomingTransfer transfer = announced();
    transfer.received(part("", 0, otherType, 8));
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.type(), otherType);
    EXPECT_EQ(transfer.format(), 8);
}

TEST(Increments, keepTheTypeOfTheFirstWhateverTheEmptyOneHas) {
    IncomingTransfer transfer = announced();
    transfer.received(part("abc"));
    transfer.received(part("", 0, otherType, 32));
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_EQ(transfer.format(), 8);
    EXPECT_EQ(transfer.takeValue().view(), "abc");
}

TEST(Increments, areTakenWhateverSizeIsAnnounced) {
    const std::string_view zero("\0\0\0\0", 4);
    const std::string_view fourGigabytes("\xFF\xFF\xFF\xFF", 4);
    for (const std::string_view guess : {zero, fourGigabytes}) {
        IncomingTransfer transfer(limit, incremental);
        transfer.received(announcement(guess));
        EXPECT_EQ(transfer.state(), State::increments);
        EXPECT_EQ(transfer.receivedBytes(), 4U);
        transfer.received(part("small"));
        EXPECT_EQ(transfer.receivedBytes(), 9U);
        transfer.received(lastIncrement());
        EXPECT_EQ(transfer.takeValue().view(), "small");
    }
}

TEST(Increments, takeNoMemoryForTheSizeThatIsAnnounced) {
    const std::size_t before = addressSpacePages();
    IncomingTransfer transfer(std::size_t{1} << 40, incremental); // a limit above the owner's estimate
    transfer.received(announcement("\xFF\xFF\xFF\xFF"));
    transfer.received(part("small"));
    const std::size_t after = addressSpacePages();
    ASSERT_GT(before, 0U);
    EXPECT_LT(after, before + (std::size_t{1} << 28) / 4096) << "announced are 4 GiB";
}

TEST(Increments, areTakenWhateverFormTheAnnouncementHas) {
    for (const PropertyPart& odd :
         {part("", 0, incremental, 32), part("", 0, incremental, 8), part("12", 0, incremental, 16),
          part("12345678", 0, incremental, 8), part(std::string(limit + 1, 'x'), 0, incremental, 32)}) {
        IncomingTransfer transfer(limit, incremental);
        transfer.received(odd);
        EXPECT_EQ(transfer.state(), State::increments);
        transfer.received(part("abc"));
        transfer.received(lastIncrement());
        EXPECT_EQ(transfer.state(), State::complete);
        EXPECT_EQ(transfer.type(), utf8);
        EXPECT_EQ(transfer.takeValue().view(), "abc");
    }
}

TEST(Increments, reachTheLimit) {
    IncomingTransfer transfer = announced();
    transfer.received(part(std::string(limit - 1, 'x')));
    transfer.received(part("x"));
    EXPECT_EQ(transfer.state(), State::increments);
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.takeValue().view(), std::string(limit, 'x'));
}

TEST(Increments, reachTheLimitInOne) {
    IncomingTransfer transfer = announced();
    transfer.received(part(std::string(limit, 'x')));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.takeValue().view(), std::string(limit, 'x'));
}

TEST(Increments, areCutOneBytePastTheLimitAndLetThrough) {
    IncomingTransfer transfer = announced();
    transfer.received(part(std::string(limit, 'x')));
    EXPECT_EQ(transfer.state(), State::increments);
    EXPECT_EQ(transfer.room(), 1U);
    transfer.received(part("y"));
    EXPECT_EQ(transfer.state(), State::cut);
    EXPECT_TRUE(transfer.hasValue());
    EXPECT_EQ(transfer.room(), 0U);
    EXPECT_FALSE(transfer.isOver());
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("more"));
    EXPECT_EQ(transfer.state(), State::cut);
    transfer.received(lastIncrement());
    EXPECT_TRUE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.takeValue().view(), std::string(limit, 'x') + "y");
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(Increments, areLetThroughAfterTheirBeginningWasTaken) {
    IncomingTransfer transfer = announced();
    transfer.received(part(std::string(limit + 5, 'x')));
    EXPECT_EQ(transfer.state(), State::cut);
    EXPECT_EQ(transfer.takeValue().view(), std::string(limit + 1, 'x'));
    EXPECT_FALSE(transfer.isOver());
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("more"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(Increments, failWhenOneHasAnotherType) {
    IncomingTransfer transfer = announced();
    transfer.received(part("abc"));
    transfer.received(part("def", 0, otherType));
    EXPECT_EQ(transfer.state(), State::failed);
    transfer.received(part("ghi"));
    EXPECT_EQ(transfer.state(), State::failed);
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(Increments, failWhenOneHasAnotherFormat) {
    for (const int format : {16, 32}) {
        IncomingTransfer transfer = announced();
        transfer.received(part("abcd"));
        transfer.received(part("efgh", 0, utf8, format));
        EXPECT_EQ(transfer.state(), State::failed) << format;
    }
}

TEST(Increments, failWhenTheyAreAnnouncedAgain) {
    IncomingTransfer transfer = announced();
    transfer.received(part("abc"));
    transfer.received(announcement());
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("abc"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(Increments, failWhenTheyAreAnnouncedTwiceAtOnce) {
    IncomingTransfer transfer = announced();
    transfer.received(announcement("\x01\x02\x03\x04"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over) << "the guess of the size is no value";
}

TEST(Increments, goOnAfterAChangeThatLeftNoProperty) {
    IncomingTransfer transfer = announced();
    transfer.received(noProperty());
    EXPECT_EQ(transfer.state(), State::increments);
    transfer.received(part("abc"));
    transfer.received(noProperty());
    EXPECT_EQ(transfer.state(), State::increments);
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("def"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.takeValue().view(), "abcdef");
}

TEST(Increments, comeInWiderFormats) {
    for (const int format : {16, 32}) {
        IncomingTransfer transfer = announced(8);
        transfer.received(part("abcd", 0, utf8, format));
        transfer.received(part("efgh", 0, utf8, format));
        EXPECT_EQ(transfer.receivedBytes(), 4U + 8U);
        transfer.received(part("", 0, utf8, format));
        EXPECT_EQ(transfer.state(), State::complete) << format;
        EXPECT_EQ(transfer.format(), format);
        EXPECT_EQ(transfer.takeValue().view(), "abcdefgh");

        IncomingTransfer isTooLong = announced(7);
        isTooLong.received(part("abcd", 0, utf8, format));
        isTooLong.received(part("efgh", 0, utf8, format));
        EXPECT_EQ(isTooLong.state(), State::cut) << format;
    }
}

TEST(Increments, areASignOfLifeEach) {
    IncomingTransfer transfer = announced();
    std::size_t before = transfer.receivedBytes();
    for (const std::string_view increment : {"abc", "d", "efg"}) {
        transfer.received(part(increment));
        EXPECT_EQ(transfer.receivedBytes(), before + increment.size());
        before = transfer.receivedBytes();
    }
}

TEST(Increments, takeNoRefusal) {
    IncomingTransfer transfer = announced();
    transfer.refused();
    EXPECT_EQ(transfer.state(), State::increments);
    transfer.received(part("abc"));
    transfer.refused();
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.takeValue().view(), "abc");
}

TEST(Increments, areNotExpectedAfterTheEnd) {
    IncomingTransfer transfer = announced();
    transfer.received(part("abc"));
    transfer.received(lastIncrement());
    const std::size_t bytes = transfer.receivedBytes();
    for (const PropertyPart& late : {part("late"), announcement(), lastIncrement(), noProperty()})
        transfer.received(late);
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.receivedBytes(), bytes);
    EXPECT_EQ(transfer.takeValue().view(), "abc");
}

} // namespace
} // namespace tavel
