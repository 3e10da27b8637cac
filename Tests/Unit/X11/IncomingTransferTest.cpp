#include "Linux/X11/Selections/IncomingTransfer.h"

#include "Tests/Unit/X11/Parts.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {
namespace {

using State = IncomingTransfer::State;

constexpr std::size_t limit = 10;

TEST(IncomingTransfer, waitsForAnAnswer) {
    const IncomingTransfer transfer(limit, incremental);
    EXPECT_EQ(transfer.state(), State::requested);
    EXPECT_FALSE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.receivedBytes(), 0U);
}

TEST(IncomingTransfer, isOverWhenTheOwnerRefuses) {
    IncomingTransfer transfer(limit, incremental);
    transfer.refused();
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, isOverWhenThePropertyOfTheAnswerIsNotThere) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(noProperty());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, takesAValueThatComesInOnePart) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("value"));
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_TRUE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_EQ(transfer.format(), 8);
    EXPECT_EQ(transfer.receivedBytes(), 5U);
    EXPECT_EQ(transfer.takeValue().view(), "value");
}

TEST(IncomingTransfer, copiesNoValueThatComesInOnePart) {
    IncomingTransfer transfer(limit, incremental);
    const PropertyPart whole = part(std::string(limit, 'x'));
    transfer.received(whole);
    EXPECT_EQ(transfer.takeValue().data(), whole.bytes.data());
}

TEST(IncomingTransfer, givesTheValueOnce) {
    IncomingTransfer inOne(limit, incremental);
    inOne.received(part("value"));
    EXPECT_EQ(inOne.takeValue().view(), "value");
    EXPECT_TRUE(inOne.takeValue().empty());

    IncomingTransfer inTwo(limit, incremental);
    inTwo.received(part("valu", 1));
    inTwo.received(part("e"));
    EXPECT_EQ(inTwo.takeValue().view(), "value");
    EXPECT_TRUE(inTwo.takeValue().empty());
}

TEST(IncomingTransfer, takesAValueOfNoLength) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part(""));
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_EQ(transfer.format(), 8);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, joinsThePartsOfAValue) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("abcd", 6));
    EXPECT_EQ(transfer.state(), State::arriving);
    EXPECT_FALSE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.receivedBytes(), 4U);
    transfer.received(part("efgh", 2));
    EXPECT_EQ(transfer.state(), State::arriving);
    EXPECT_EQ(transfer.receivedBytes(), 8U);
    transfer.received(part("ij"));
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.receivedBytes(), 10U);
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_EQ(transfer.takeValue().view(), "abcdefghij");
}

TEST(IncomingTransfer, keepsZeroBytes) {
    const std::string value("\0a\0", 3);
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part(value, 3));
    transfer.received(part(value));
    EXPECT_EQ(transfer.takeValue().view(), value + value);
}

TEST(IncomingTransfer, takesExactlyTheLimit) {
    IncomingTransfer inOne(limit, incremental);
    inOne.received(part(std::string(limit, 'x')));
    EXPECT_EQ(inOne.state(), State::complete);
    EXPECT_EQ(inOne.takeValue().view(), std::string(limit, 'x'));

    IncomingTransfer inTwo(limit, incremental);
    inTwo.received(part(std::string(limit - 1, 'x'), 1));
    inTwo.received(part("x"));
    EXPECT_EQ(inTwo.state(), State::complete);
    EXPECT_EQ(inTwo.takeValue().view(), std::string(limit, 'x'));
}

TEST(IncomingTransfer, cutsAValueOneByteBehindTheLimit) {
    for (const std::size_t excess : {1U, 2U, 1000U}) {
        IncomingTransfer inOne(limit, incremental);
        inOne.received(part(std::string(limit + excess, 'x')));
        EXPECT_EQ(inOne.state(), State::cut);
        EXPECT_TRUE(inOne.isOver());
        EXPECT_EQ(inOne.takeValue().view(), std::string(limit + 1, 'x'));
        EXPECT_EQ(inOne.state(), State::over);
        EXPECT_TRUE(inOne.takeValue().empty());

        IncomingTransfer inTwo(limit, incremental);
        inTwo.received(part(std::string(limit, 'x'), excess));
        EXPECT_EQ(inTwo.state(), State::arriving);
        inTwo.received(part(std::string(excess, 'x')));
        EXPECT_TRUE(inTwo.isOver());
        EXPECT_EQ(inTwo.takeValue().view(), std::string(limit + 1, 'x'));
    }
}

TEST(IncomingTransfer, isCutWhereTheLimitIsPassedAndIsOverWithTheRest) {
    IncomingTransfer transfer(limit, incremental);
    EXPECT_EQ(transfer.room(), limit + 1);
    transfer.received(part(std::string(limit + 1, 'x'), 4));
    EXPECT_EQ(transfer.state(), State::cut);
    EXPECT_TRUE(transfer.letsThrough());
    EXPECT_FALSE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
    transfer.received(part("rest"));
    EXPECT_TRUE(transfer.isOver());
    EXPECT_EQ(transfer.takeValue().view(), std::string(limit + 1, 'x'));
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(IncomingTransfer, keepsTheBeginningOfACutValueWhatsoeverFollows) {
    for (const PropertyPart& late : {part("other"), part("", 2), noProperty(), part("x", 0, otherType)}) {
        IncomingTransfer transfer(limit, incremental);
        transfer.received(part(std::string(limit + 1, 'x'), 4));
        transfer.abandon();
        transfer.received(late);
        EXPECT_EQ(transfer.takeValue().view(), std::string(limit + 1, 'x'));
    }
}

TEST(IncomingTransfer, takesOnlyNothingWithALimitOfZero) {
    IncomingTransfer nothing(0, incremental);
    nothing.received(part(""));
    EXPECT_EQ(nothing.state(), State::complete);

    IncomingTransfer something(0, incremental);
    something.received(part("x"));
    EXPECT_EQ(something.state(), State::cut);
}

TEST(IncomingTransfer, failsWhenTheTypeChangesBetweenParts) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("abc", 3));
    transfer.received(part("def", 0, otherType));
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, failsWhenTheFormatChangesBetweenParts) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("abcd", 4));
    transfer.received(part("efgh", 0, utf8, 32));
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, failsWhenThePropertyVanishesBetweenParts) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("abc", 3));
    transfer.received(noProperty());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, failsWhenAnAnnouncementReplacesAValueThatArrives) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("abc", 3));
    transfer.received(announcement());
    EXPECT_NE(transfer.state(), State::increments) << "what came before would be a part of the value";
    transfer.received(part("def"));
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(IncomingTransfer, countsTheBytesOfWiderFormats) {
    for (const int format : {16, 32}) {
        IncomingTransfer fits(8, incremental);
        fits.received(part("abcdefgh", 0, utf8, format));
        EXPECT_EQ(fits.state(), State::complete) << format;
        EXPECT_EQ(fits.format(), format);
        EXPECT_EQ(fits.receivedBytes(), 8U);
        EXPECT_EQ(fits.takeValue().view(), "abcdefgh");

        IncomingTransfer inTwo(8, incremental);
        inTwo.received(part("abcd", 4, utf8, format));
        inTwo.received(part("efgh", 0, utf8, format));
        EXPECT_EQ(inTwo.format(), format);
        EXPECT_EQ(inTwo.takeValue().view(), "abcdefgh");

        IncomingTransfer isTooLong(7, incremental);
        isTooLong.received(part("abcdefgh", 0, utf8, format));
        EXPECT_EQ(isTooLong.state(), State::cut) << format;
    }
}

TEST(IncomingTransfer, takesNoRefusalAfterTheAnswer) {
    IncomingTransfer arriving(limit, incremental);
    arriving.received(part("abc", 3));
    arriving.refused();
    EXPECT_EQ(arriving.state(), State::arriving);
    arriving.received(part("def"));
    arriving.refused();
    EXPECT_EQ(arriving.state(), State::complete);
    EXPECT_EQ(arriving.takeValue().view(), "abcdef");
}

TEST(IncomingTransfer, letsNothingChangeACompleteValue) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("value"));
    for (const PropertyPart& late : {part("other"), part("oth", 2), announcement(), noProperty()})
        transfer.received(late);
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.receivedBytes(), 5U);
    EXPECT_EQ(transfer.type(), utf8);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_EQ(transfer.takeValue().view(), "value");
}

TEST(IncomingTransfer, staysOver) {
    IncomingTransfer transfer(limit, incremental);
    transfer.refused();
    for (const PropertyPart& late : {part("other"), part("oth", 2), announcement(), noProperty()})
        transfer.received(late);
    transfer.abandon();
    transfer.refused();
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_EQ(transfer.receivedBytes(), 0U);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty());
}

} // namespace
} // namespace tavel
