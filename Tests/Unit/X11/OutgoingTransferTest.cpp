#include "Linux/X11/Selections/OutgoingTransfer.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using State = OutgoingTransfer::State;
using std::chrono::seconds;

constexpr OutgoingTransfer::Clock::time_point start{seconds(1000)};
constexpr seconds timeOut{5};

OutgoingTransfer sending(std::string_view value, std::size_t incrementBytes = 4) {
    return {Bytes::copyOf(value), incrementBytes, start, timeOut};
}

/// All increments for a requestor that deletes the property until the transfer is over.
std::vector<std::string> incrementsOf(OutgoingTransfer transfer) {
    std::vector<std::string> increments;
    while (const auto increment = transfer.propertyDeleted(start)) {
        increments.emplace_back(increment->view());
        if (increments.size() > 100)
            break;
    }
    EXPECT_EQ(transfer.state(), State::over);
    return increments;
}

using Increments = std::vector<std::string>;

TEST(OutgoingTransfer, sendsNothingBeforeTheRequestorBegins) {
    EXPECT_EQ(sending("abcdef").state(), State::announced);
}

TEST(OutgoingTransfer, goesThroughItsStatesWithTheDeletions) {
    OutgoingTransfer transfer = sending("abcdef");
    EXPECT_EQ(transfer.propertyDeleted(start).value().view(), "abcd");
    EXPECT_EQ(transfer.state(), State::sending);
    EXPECT_EQ(transfer.propertyDeleted(start).value().view(), "ef");
    EXPECT_EQ(transfer.state(), State::sending);
    const auto last = transfer.propertyDeleted(start);
    ASSERT_TRUE(last);
    EXPECT_TRUE(last->empty());
    EXPECT_EQ(transfer.state(), State::ending);
    EXPECT_FALSE(transfer.propertyDeleted(start));
    EXPECT_EQ(transfer.state(), State::over);
}

TEST(OutgoingTransfer, endsWithOneEmptyIncrementWhateverTheLength) {
    EXPECT_EQ(incrementsOf(sending("")), Increments({""}));
    EXPECT_EQ(incrementsOf(sending("a")), Increments({"a", ""}));
    EXPECT_EQ(incrementsOf(sending("abc")), Increments({"abc", ""}));
    EXPECT_EQ(incrementsOf(sending("abcd")), Increments({"abcd", ""}));
    EXPECT_EQ(incrementsOf(sending("abcde")), Increments({"abcd", "e", ""}));
    EXPECT_EQ(incrementsOf(sending("abcdefg")), Increments({"abcd", "efg", ""}));
    EXPECT_EQ(incrementsOf(sending("abcdefgh")), Increments({"abcd", "efgh", ""}));
    EXPECT_EQ(incrementsOf(sending("abcdefghi")), Increments({"abcd", "efgh", "i", ""}));
    EXPECT_EQ(incrementsOf(sending("abc", 1)), Increments({"a", "b", "c", ""}));
}

TEST(OutgoingTransfer, sendsBytesWithoutAnOwner) {
    EXPECT_EQ(incrementsOf({Bytes(), 4, start, timeOut}), Increments({""}));
}

TEST(OutgoingTransfer, copiesNothing) {
    const Bytes value = Bytes::copyOf("abcdefghi");
    OutgoingTransfer transfer(value, 4, start, timeOut);
    for (const std::size_t offset : {0U, 4U, 8U})
        EXPECT_EQ(transfer.propertyDeleted(start).value().data(), value.data() + offset);
}

TEST(OutgoingTransfer, hasNothingMoreAfterTheEnd) {
    OutgoingTransfer transfer = sending("a");
    for (int deletion = 0; deletion < 2; ++deletion)
        ASSERT_TRUE(transfer.propertyDeleted(start));
    for (int deletion = 0; deletion < 3; ++deletion) {
        EXPECT_FALSE(transfer.propertyDeleted(start));
        EXPECT_EQ(transfer.state(), State::over);
    }
}

TEST(OutgoingTransfer, canBeGivenUpInEveryState) {
    for (int deletions = 0; deletions <= 4; ++deletions) {
        OutgoingTransfer transfer = sending("abcdef");
        for (int deletion = 0; deletion < deletions; ++deletion)
            static_cast<void>(transfer.propertyDeleted(start));
        transfer.giveUp();
        EXPECT_EQ(transfer.state(), State::over) << deletions;
        EXPECT_FALSE(transfer.propertyDeleted(start)) << deletions;
        transfer.giveUp();
        EXPECT_EQ(transfer.state(), State::over) << deletions;
    }
}

/// A transfer of "abcdef", and a weak reference to the value's memory, which only the transfer owns.
std::pair<OutgoingTransfer, std::weak_ptr<const std::string>> watched() {
    auto buffer = std::make_shared<const std::string>("abcdef");
    std::weak_ptr<const std::string> memory = buffer;
    const char* const data = buffer->data();
    const std::size_t size = buffer->size();
    return {OutgoingTransfer(Bytes(std::move(buffer), data, size), 4, start, timeOut), memory};
}

TEST(OutgoingTransfer, letsGoOfTheValueWhenItIsGivenUp) {
    auto [transfer, memory] = watched();
    EXPECT_FALSE(memory.expired());
    transfer.giveUp();
    EXPECT_TRUE(memory.expired());
}

TEST(OutgoingTransfer, letsGoOfTheValueAtTheEnd) {
    auto [transfer, memory] = watched();
    for (int deletion = 0; deletion < 3; ++deletion)
        ASSERT_TRUE(transfer.propertyDeleted(start));
    EXPECT_FALSE(transfer.propertyDeleted(start));
    EXPECT_TRUE(memory.expired());
}

TEST(OutgoingTransfer, keepsAnIncrementAliveThatIsStillInUse) {
    OutgoingTransfer transfer = sending("abcdef");
    const Bytes increment = transfer.propertyDeleted(start).value();
    transfer.giveUp();
    EXPECT_EQ(increment.view(), "abcd");
}

TEST(OutgoingTransfer, waitsFromTheAnnouncementOn) {
    EXPECT_EQ(sending("abcdef").deadline(), start + timeOut);
}

TEST(OutgoingTransfer, waitsAnewFromEachDeletionOn) {
    OutgoingTransfer transfer = sending("abcdef");
    for (const seconds passed : {seconds(1), seconds(4), seconds(100)}) {
        static_cast<void>(transfer.propertyDeleted(start + passed));
        EXPECT_EQ(transfer.deadline(), start + passed + timeOut);
    }
    ASSERT_EQ(transfer.state(), State::ending);
}

TEST(OutgoingTransfer, movesItsDeadlineWithDeletionsOnly) {
    OutgoingTransfer transfer = sending("abcdef");
    static_cast<void>(transfer.state());
    static_cast<void>(transfer.deadline());
    transfer.giveUp();
    EXPECT_EQ(transfer.deadline(), start + timeOut);
}

} // namespace
} // namespace tavel
