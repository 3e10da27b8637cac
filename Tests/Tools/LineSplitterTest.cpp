#include "Console/LineSplitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tavel {

namespace {

using testing::ElementsAre;

class LineSplitterTest : public testing::Test {
protected:
    void append(std::string_view bytes) {
        splitter_.append(bytes, [this](std::string_view line) { lines_.emplace_back(line); });
    }

    void finish() {
        splitter_.finish([this](std::string_view line) { lines_.emplace_back(line); });
    }

    std::vector<std::string> lines_;

private:
    LineSplitter splitter_;
};

TEST_F(LineSplitterTest, SplitsAtBothTerminators) {
    append("a\nb\r\n\nc\rd\n\r\n");
    EXPECT_THAT(lines_, ElementsAre("a", "b", "", "c\rd", ""));
}

TEST_F(LineSplitterTest, PutsPiecesTogether) {
    for (const char c : std::string_view("ab\r\nc\n"))
        append({&c, 1});
    EXPECT_THAT(lines_, ElementsAre("ab", "c"));
}

TEST_F(LineSplitterTest, KeepsTheRestUntilTheEnd) {
    append("a\nb");
    EXPECT_THAT(lines_, ElementsAre("a"));
    append("c");
    finish();
    finish();
    EXPECT_THAT(lines_, ElementsAre("a", "bc"));
}

TEST_F(LineSplitterTest, HasNoLineAfterTheLastTerminator) {
    append("a\n");
    finish();
    EXPECT_THAT(lines_, ElementsAre("a"));
}

TEST_F(LineSplitterTest, TakesLinesOfAnyLengthAndContent) {
    const std::string half(3'000'000, '\0');
    append(half);
    append(half + "\n");
    ASSERT_EQ(lines_.size(), 1U);
    EXPECT_EQ(lines_.front(), half + half);
}

} // namespace

} // namespace tavel
