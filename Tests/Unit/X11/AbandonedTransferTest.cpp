#include "Linux/X11/Selections/IncomingTransfer.h"
#include "Tests/Unit/X11/Parts.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

namespace tavel {
namespace {

using State = IncomingTransfer::State;

constexpr std::size_t limit = 10;

TEST(AbandonedTransfer, waitsForTheAnswerThatIsStillDue) {
    IncomingTransfer transfer(limit, incremental);
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_FALSE(transfer.isOver());
    EXPECT_FALSE(transfer.expectsIncrement());
}

TEST(AbandonedTransfer, isOverWithARefusal) {
    IncomingTransfer transfer(limit, incremental);
    transfer.abandon();
    transfer.refused();
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(AbandonedTransfer, isOverWithAWholeValue) {
    for (const PropertyPart& late : {part("value"), part(""), part("val", 2), part("", 5), noProperty()}) {
        IncomingTransfer transfer(limit, incremental);
        transfer.abandon();
        transfer.received(late);
        EXPECT_EQ(transfer.state(), State::over);
        EXPECT_FALSE(transfer.expectsIncrement());
        EXPECT_TRUE(transfer.takeValue().empty());
    }
}

TEST(AbandonedTransfer, isOverWithTheRestOfAValueThatWasArriving) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(part("val", 2));
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty()) << "what had come is let go";
    transfer.received(part("ue"));
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(AbandonedTransfer, letsIncrementsThroughFromTheirAnnouncementOn) {
    IncomingTransfer transfer(limit, incremental);
    transfer.abandon();
    transfer.received(announcement());
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("abc"));
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty());
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_FALSE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(AbandonedTransfer, letsTheRemainingIncrementsThrough) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(announcement());
    transfer.received(part("abc"));
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    EXPECT_TRUE(transfer.takeValue().empty()) << "what had come is let go";
    transfer.received(part("def"));
    transfer.received(part(std::string(limit + 1, 'x')));
    transfer.received(noProperty());
    transfer.received(part("other", 0, otherType, 16));
    EXPECT_EQ(transfer.state(), State::failed);
    transfer.received(lastIncrement());
    EXPECT_EQ(transfer.state(), State::over);
    EXPECT_TRUE(transfer.takeValue().empty());
}

TEST(AbandonedTransfer, takesAnIncrementThatIsNotReadForNoEnd) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(announcement());
    transfer.abandon();
    transfer.received(part("", 5)); // a read of length 0 of an existing property
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(part("", 0));
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(AbandonedTransfer, keepsNothingOfWhatItLetsThrough) {
    auto buffer = std::make_shared<const std::string>("abc");
    const std::weak_ptr<const std::string> watched = buffer;
    PropertyPart late{utf8, 8, Bytes(buffer, buffer->data(), buffer->size()), 0};
    buffer.reset();
    IncomingTransfer transfer(limit, incremental);
    transfer.abandon();
    transfer.received(std::exchange(late, {}));
    EXPECT_TRUE(watched.expired());
}

TEST(AbandonedTransfer, canBeAbandonedAgain) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(announcement());
    transfer.abandon();
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::failed);
    EXPECT_TRUE(transfer.expectsIncrement());
    transfer.received(lastIncrement());
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(AbandonedTransfer, staysCompleteIfItWas) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(announcement());
    transfer.received(part("abc"));
    transfer.received(lastIncrement());
    transfer.abandon();
    EXPECT_EQ(transfer.state(), State::complete);
    EXPECT_EQ(transfer.takeValue().view(), "abc");
}

TEST(AbandonedTransfer, stillCountsWhatComes) {
    IncomingTransfer transfer(limit, incremental);
    transfer.received(announcement());
    transfer.abandon();
    const std::size_t before = transfer.receivedBytes();
    transfer.received(part("abc"));
    EXPECT_EQ(transfer.receivedBytes(), before + 3);
}

} // namespace
} // namespace tavel
