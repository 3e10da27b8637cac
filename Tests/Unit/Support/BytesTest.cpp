#include "Support/Bytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

namespace tavel {
namespace {

/// A foreign buffer that reports its destruction.
class Owner {
public:
    explicit Owner(bool& gone) : gone_(gone) {}

    ~Owner() { gone_ = true; }

    Owner(const Owner&) = delete;
    Owner& operator=(const Owner&) = delete;

    std::string content = "somebody else's buffer";

private:
    bool& gone_;
};

TEST(Bytes, areEmptyByDefault) {
    const Bytes bytes;
    EXPECT_TRUE(bytes.empty());
    EXPECT_EQ(bytes.size(), 0U);
    EXPECT_EQ(bytes.view(), "");
    EXPECT_TRUE(bytes.slice(0, 10).empty());
}

TEST(Bytes, doNotFollowTheContentThatTheyWereCopiedFrom) {
    std::string content = "before";
    const Bytes bytes = Bytes::copyOf(content);
    content = "after!";
    EXPECT_EQ(bytes.view(), "before");
}

TEST(Bytes, takeAStringsBufferOverWithoutACopy) {
    std::string content(1000, 'x');
    const char* const buffer = content.data();
    const Bytes bytes = Bytes::adopt(std::move(content));
    EXPECT_EQ(bytes.data(), buffer);
    EXPECT_EQ(bytes.size(), 1000U);
}

TEST(Bytes, mayHoldZeroBytes) {
    const Bytes bytes = Bytes::copyOf(std::string_view("a\0b", 3));
    EXPECT_EQ(bytes.view(), std::string_view("a\0b", 3));
}

TEST(Bytes, shareOneBufferWithTheirCopies) {
    const Bytes bytes = Bytes::copyOf("shared");
    const Bytes copy = bytes; // NOLINT(performance-unnecessary-copy-initialization): the copy is the point
    EXPECT_EQ(copy.data(), bytes.data());
    EXPECT_EQ(copy.size(), bytes.size());
}

TEST(Bytes, shareOneBufferWithTheirSlices) {
    const Bytes bytes = Bytes::copyOf("0123456789");
    const Bytes slice = bytes.slice(3, 4);
    EXPECT_EQ(slice.data(), bytes.data() + 3);
    EXPECT_EQ(slice.view(), "3456");
    EXPECT_EQ(slice.slice(1, 2).view(), "45");
}

TEST(Bytes, giveNoMoreThanTheyHaveInASlice) {
    const Bytes bytes = Bytes::copyOf("0123456789");
    EXPECT_EQ(bytes.slice(0, 10).view(), "0123456789");
    EXPECT_EQ(bytes.slice(7, 3).view(), "789");
    EXPECT_EQ(bytes.slice(7, 4).view(), "789");
    EXPECT_EQ(bytes.slice(7, std::string_view::npos).view(), "789"); // offset + length would overflow
    EXPECT_EQ(bytes.slice(10, 5).view(), "");
    EXPECT_EQ(bytes.slice(4, 0).view(), "");
    EXPECT_EQ(bytes.slice(2, 5).slice(3, 5).view(), "56"); // the slice's end, not the buffer's
}

TEST(Bytes, keepTheOwnerUntilTheLastCopyGoes) {
    bool gone = false;
    auto owner = std::make_shared<const Owner>(gone);
    const std::string_view content = owner->content;
    auto bytes = std::make_unique<Bytes>(std::move(owner), content.data(), content.size());
    auto copy = std::make_unique<Bytes>(*bytes);
    bytes.reset();
    EXPECT_FALSE(gone);
    EXPECT_EQ(copy->view(), "somebody else's buffer");
    copy.reset();
    EXPECT_TRUE(gone);
}

TEST(Bytes, keepTheOwnerForASliceAlone) {
    bool gone = false;
    Bytes slice;
    {
        auto owner = std::make_shared<const Owner>(gone);
        const std::string_view content = owner->content;
        slice = Bytes(std::move(owner), content.data(), content.size()).slice(0, 8);
    }
    EXPECT_FALSE(gone);
    EXPECT_EQ(slice.view(), "somebody");
    slice = Bytes();
    EXPECT_TRUE(gone);
}

TEST(Bytes, mayBeDroppedOnAnotherThread) {
    bool gone = false;
    auto owner = std::make_shared<const Owner>(gone);
    const std::string_view content = owner->content;
    Bytes bytes(std::move(owner), content.data(), content.size());
    std::thread([moved = std::exchange(bytes, Bytes())]() mutable { moved = Bytes(); }).join();
    EXPECT_TRUE(gone);
}

} // namespace
} // namespace tavel
