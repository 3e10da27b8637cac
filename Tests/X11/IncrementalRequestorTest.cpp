#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gtest/gtest.h>

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

} // namespace

} // namespace tavel
