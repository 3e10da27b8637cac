#include "Linux/Selections/GrowingBuffer.h"

#include "Tests/Unit/Fixtures/Random.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cstring>
#include <string>
#include <utility>

namespace tavel {
namespace {

TEST(GrowingBuffer, isEmptyAtFirst) {
    GrowingBuffer buffer;
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_TRUE(buffer.take().empty());
}

TEST(GrowingBuffer, staysEmptyWhenNothingIsAppended) {
    GrowingBuffer buffer;
    buffer.append({});
    buffer.append("");
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_TRUE(buffer.take().empty());
}

TEST(GrowingBuffer, gathersWhatIsAppended) {
    GrowingBuffer buffer;
    buffer.append("abc");
    EXPECT_EQ(buffer.size(), 3U);
    buffer.append("");
    EXPECT_EQ(buffer.size(), 3U);
    buffer.append(std::string_view("\0d", 2));
    EXPECT_EQ(buffer.size(), 5U);
    EXPECT_EQ(buffer.take().view(), std::string_view("abc\0d", 5));
}

TEST(GrowingBuffer, keepsWhatWasFilledOfItsRoomAlone) {
    GrowingBuffer buffer;
    buffer.append("abc");
    std::memcpy(buffer.room(100'000), "defg", 4);
    buffer.filled(2);
    EXPECT_EQ(buffer.size(), 5U);
    buffer.append("h");
    EXPECT_EQ(buffer.take().view(), "abcdeh");
}

TEST(GrowingBuffer, growsByOneByteAtEveryCapacity) {
    for (const std::size_t capacity :
         {std::size_t{64} * 1024, std::size_t{128} * 1024, std::size_t{256} * 1024}) {
        for (std::size_t size = capacity - 1; size <= capacity + 1; ++size) {
            const std::string content = Random(size).bytes(size);
            GrowingBuffer inTwo;
            inTwo.append(std::string_view(content).substr(0, size - 1));
            inTwo.append(std::string_view(content).substr(size - 1));
            ASSERT_EQ(inTwo.size(), size);
            ASSERT_EQ(inTwo.take().view(), content);

            GrowingBuffer inOne;
            inOne.append(content);
            ASSERT_EQ(inOne.take().view(), content);
        }
    }
}

TEST(GrowingBuffer, givesBackManyAppendsOfRandomSizes) {
    Random random(1);
    for (const std::size_t largest : {std::size_t{10}, std::size_t{5'000}, std::size_t{300'000}}) {
        GrowingBuffer buffer;
        std::string expected;
        for (int count = 0; count < 100; ++count) {
            std::string content(random.below(largest), random.byte());
            if (!content.empty())
                content.back() = random.byte();
            buffer.append(content);
            expected += content;
            ASSERT_EQ(buffer.size(), expected.size());
        }
        ASSERT_EQ(buffer.take().view(), expected);
    }
}

TEST(GrowingBuffer, isEmptyAfterItsContentIsTaken) {
    GrowingBuffer buffer;
    buffer.append("abc");
    EXPECT_EQ(buffer.take().view(), "abc");
    EXPECT_EQ(buffer.size(), 0U);
    EXPECT_TRUE(buffer.take().empty());
}

TEST(GrowingBuffer, canBeUsedAgainAfterItsContentIsTaken) {
    GrowingBuffer buffer;
    buffer.append("the first");
    const Bytes first = buffer.take();
    buffer.append("second"); // would fit into the memory of the first value
    EXPECT_EQ(buffer.size(), 6U);
    const Bytes second = buffer.take();
    buffer.append("and the third");
    EXPECT_EQ(first.view(), "the first");
    EXPECT_EQ(second.view(), "second");
    EXPECT_EQ(buffer.take().view(), "and the third");
}

TEST(GrowingBuffer, givesBackTheMemoryThatItsContentDoesNotFill) {
    GrowingBuffer buffer;
    buffer.append(std::string(std::size_t{64} * 1024, 'x'));
    buffer.append("x");
    const Bytes taken = buffer.take();
    EXPECT_LT(malloc_usable_size(const_cast<char*>(taken.data())), std::size_t{72} * 1024);
}

TEST(GrowingBuffer, leavesWhatWasTakenAlive) {
    Bytes taken;
    {
        GrowingBuffer buffer;
        buffer.append("abc");
        taken = buffer.take();
    }
    EXPECT_EQ(taken.view(), "abc");
}

TEST(GrowingBuffer, moves) {
    GrowingBuffer buffer;
    buffer.append("abc");
    GrowingBuffer other = std::move(buffer);
    other.append("def");
    EXPECT_EQ(other.take().view(), "abcdef");
}

TEST(GrowingBuffer, isEmptyWhenItsContentIsExchanged) {
    GrowingBuffer buffer;
    buffer.append("abc");
    EXPECT_EQ(std::exchange(buffer, {}).take().view(), "abc");
    EXPECT_EQ(buffer.size(), 0U);
    buffer.append("de");
    EXPECT_EQ(buffer.take().view(), "de");
}

} // namespace
} // namespace tavel
