#include "Linux/Base/ReadyDescriptors.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>

#include <cstdlib>
#include <map>
#include <utility>
#include <vector>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::Gt;
using testing::IsEmpty;

using For = ReadyDescriptors::For;

class ReadyDescriptorsTest : public testing::Test {
protected:
    /// The reading and the writing end.
    static std::pair<Descriptor, Descriptor> makePipe() {
        int ends[2] = {-1, -1};
        EXPECT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
        return {Descriptor(ends[0]), Descriptor(ends[1])};
    }

    bool isReadable() const {
        pollfd one{descriptors.descriptor(), POLLIN, 0};
        return poll(&one, 1, 0) == 1;
    }

    ReadyDescriptors descriptors;
};

TEST_F(ReadyDescriptorsTest, areNamedByTheirKeysAsLongAsTheyAreReady) {
    const auto [reading, writing] = makePipe();
    ASSERT_TRUE(descriptors.add(reading.number(), For::reading, 7));
    EXPECT_THAT(descriptors.ready(), IsEmpty());
    EXPECT_FALSE(isReadable());
    ASSERT_EQ(write(writing.number(), "x", 1), 1);
    EXPECT_TRUE(isReadable());
    EXPECT_THAT(descriptors.ready(), ElementsAre(7));
    EXPECT_THAT(descriptors.ready(), ElementsAre(7));
    char byte = 0;
    ASSERT_EQ(read(reading.number(), &byte, 1), 1);
    EXPECT_THAT(descriptors.ready(), IsEmpty());
}

TEST_F(ReadyDescriptorsTest, areWaitedForInTheDirectionThatWasNamedLast) {
    const auto [reading, writing] = makePipe();
    ASSERT_TRUE(descriptors.add(writing.number(), For::reading, 1));
    EXPECT_THAT(descriptors.ready(), IsEmpty());
    descriptors.change(writing.number(), For::readingAndWriting, 1);
    EXPECT_THAT(descriptors.ready(), ElementsAre(1));
}

TEST_F(ReadyDescriptorsTest, areForgottenWhenTheyAreRemovedThoughACopyIsOpen) {
    auto [reading, writing] = makePipe();
    ASSERT_TRUE(descriptors.add(writing.number(), For::writing, 1));
    const Descriptor copy(dup(writing.number()));
    descriptors.remove(writing.number());
    writing.reset();
    EXPECT_THAT(descriptors.ready(), IsEmpty());
}

TEST_F(ReadyDescriptorsTest, areNotOfAKindThatIsNeverWaitedFor) {
    char path[] = "ready-descriptors-XXXXXX";
    const Descriptor file(mkostemp(path, O_CLOEXEC));
    ASSERT_TRUE(file);
    unlink(path);
    EXPECT_FALSE(descriptors.add(file.number(), For::writing, 1));
}

TEST_F(ReadyDescriptorsTest, allGetTheirTurnsHoweverMany) {
    constexpr int count = 100;
    std::vector<std::pair<Descriptor, Descriptor>> pipes;
    for (int i = 0; i < count; ++i) {
        pipes.push_back(makePipe());
        ASSERT_TRUE(descriptors.add(pipes.back().second.number(), For::writing, static_cast<unsigned>(i)));
    }
    std::map<std::uint64_t, int> turns;
    for (int pass = 0; pass < count; ++pass) {
        for (const std::uint64_t key : descriptors.ready())
            ++turns[key];
    }
    EXPECT_EQ(turns.size(), static_cast<std::size_t>(count));
    EXPECT_THAT(turns, testing::Each(testing::Pair(testing::_, Gt(5))));
}

} // namespace

} // namespace tavel
