#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gtest/gtest.h>

#include <array>
#include <memory>

namespace tavel {

namespace {

constexpr std::size_t large = std::size_t{30} << 20;

std::size_t largestProperty(X11Peers& peers) {
    std::size_t bytes = 0;
    peers.program().run([&] { bytes = peers.program().selections().connection().largestPropertyBytes(); });
    return bytes;
}

TEST(IncrementalRequestor, getsTheLargestPlainPropertyAtOnce) {
    X11Peers peers(longTimeOuts());
    ScriptedRequestor requestor(peers.display());
    const std::string bytes = distinctBytes(largestProperty(peers));
    peers.write("public.png", bytes);
    ASSERT_TRUE(requestor.convert("image/png"));
    const auto value = requestor.takeProperty();
    EXPECT_EQ(value.type, "image/png");
    EXPECT_TRUE(value.bytes == bytes);
    EXPECT_EQ(requestor.errorCount(), 0);
}

TEST(IncrementalRequestor, getsOneByteMoreInIncrements) {
    X11Peers peers(longTimeOuts());
    ScriptedRequestor requestor(peers.display());
    const std::string bytes = distinctBytes(largestProperty(peers) + 1);
    peers.write("public.png", bytes);
    ASSERT_TRUE(requestor.convert("image/png"));
    const auto announcement = requestor.takeProperty();
    EXPECT_EQ(announcement.type, "INCR");
    EXPECT_EQ(announcement.format, 32);
    ASSERT_EQ(announcement.numbers().size(), 1U);
    EXPECT_EQ(announcement.numbers().front(), bytes.size());
    const auto value = requestor.readIncrements();
    ASSERT_TRUE(value);
    EXPECT_EQ(value->type, "image/png");
    EXPECT_EQ(value->format, 8);
    EXPECT_TRUE(value->bytes == bytes);
}

TEST(IncrementalRequestor, isOneOfThreeThatAreServedByTurns) {
    X11Peers peers(longTimeOuts());
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    std::array<std::unique_ptr<ScriptedRequestor>, 3> requestors;
    for (auto& requestor : requestors) {
        requestor = std::make_unique<ScriptedRequestor>(peers.display());
        ASSERT_TRUE(requestor->convert("image/png"));
        EXPECT_EQ(requestor->takeProperty().type, "INCR");
    }
    std::array<std::string, 3> received;
    for (bool isOver = false; !isOver;) {
        for (std::size_t i = 0; i < requestors.size(); ++i) {
            ASSERT_TRUE(requestors[i]->awaitProperty());
            const auto part = requestors[i]->takeProperty();
            EXPECT_EQ(part.type, "image/png");
            received[i] += part.bytes;
            isOver = part.bytes.empty();
        }
    }
    for (const std::string& one : received)
        EXPECT_TRUE(one == bytes);
    peers.settle();
    for (auto& requestor : requestors) {
        EXPECT_FALSE(requestor->property().exists());
        EXPECT_EQ(requestor->errorCount(), 0);
    }
}

TEST(IncrementalRequestor, canHaveTwoTransfersIntoOneWindow) {
    X11Peers peers(longTimeOuts());
    ScriptedRequestor requestor(peers.display());
    const std::string png = distinctBytes(large, 1);
    const std::string tiff = distinctBytes(large, 2);
    const PasteboardItem item{{"public.png", Bytes::copyOf(png)}, {"public.tiff", Bytes::copyOf(tiff)}};
    ASSERT_TRUE(peers.board().replaceWithItems({&item, 1}));
    ASSERT_TRUE(requestor.convert("image/png", "A"));
    ASSERT_TRUE(requestor.convert("image/tiff", "B"));
    EXPECT_EQ(requestor.takeProperty("A").type, "INCR");
    const auto first = requestor.readIncrements("A");
    EXPECT_EQ(requestor.takeProperty("B").type, "INCR"); // the end of the first has not ended the second
    const auto second = requestor.readIncrements("B");
    ASSERT_TRUE(first && second);
    EXPECT_TRUE(first->bytes == png);
    EXPECT_TRUE(second->bytes == tiff);
}

TEST(IncrementalRequestor, isServedToTheEndWhenAnotherProgramHasTakenTheSelection) {
    X11Peers peers(longTimeOuts());
    ScriptedRequestor requestor(peers.display());
    ScriptedOwner other(peers.display());
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    ASSERT_TRUE(requestor.convert("image/png"));
    EXPECT_EQ(requestor.takeProperty().type, "INCR");
    ASSERT_TRUE(requestor.awaitProperty());
    other.take();
    EXPECT_TRUE(peers.isServing());
    const auto value = requestor.readIncrements();
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->bytes == bytes);
    peers.settle();
    EXPECT_FALSE(peers.isServing());
}

TEST(IncrementalRequestor, isServedTheOldContentToTheEndWhenTheProgramHasANewOne) {
    X11Peers peers(longTimeOuts());
    ScriptedRequestor requestor(peers.display());
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    ASSERT_TRUE(requestor.convert("image/png"));
    EXPECT_EQ(requestor.takeProperty().type, "INCR");
    peers.write("public.png", distinctBytes(large, 2));
    const auto value = requestor.readIncrements();
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->bytes == bytes);
}

TEST(IncrementalRequestor, whoStallsIsGivenUpWhileAnotherGoesOn) {
    auto timeOuts = longTimeOuts();
    timeOuts.requestorInactivity = std::chrono::seconds(1);
    X11Peers peers(timeOuts);
    ScriptedRequestor stalled(peers.display());
    ScriptedRequestor busy(peers.display());
    ScriptedOwner other(peers.display());
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    ASSERT_TRUE(stalled.convert("image/png"));
    EXPECT_EQ(stalled.takeProperty().type, "INCR");
    ASSERT_TRUE(stalled.awaitProperty());
    const auto value = busy.read("image/png");
    ASSERT_TRUE(value);
    EXPECT_TRUE(value->bytes == bytes);
    // Without the selection, the program serves only the stalled transfer.
    other.take();
    waitUntil([&] { return !peers.isServing(); }, atOnce);
    // After the time-out, a deletion gets no next increment.
    stalled.takeProperty();
    peers.settle();
    EXPECT_FALSE(stalled.property().exists());
    // A new request is answered.
    peers.write("public.png", "small");
    EXPECT_EQ(stalled.read("image/png")->bytes, "small");
}

TEST(IncrementalRequestor, whoNeverBeginsIsGivenUp) {
    auto timeOuts = longTimeOuts();
    timeOuts.requestorInactivity = std::chrono::milliseconds(200);
    X11Peers peers(timeOuts);
    ScriptedRequestor stalled(peers.display());
    ScriptedOwner other(peers.display());
    peers.write("public.png", distinctBytes(large));
    ASSERT_TRUE(stalled.convert("image/png"));
    other.take();
    waitUntil([&] { return !peers.isServing(); }, atOnce);
}

} // namespace

} // namespace tavel
