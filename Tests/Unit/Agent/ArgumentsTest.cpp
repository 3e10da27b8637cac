#include "TavelClipboardAgent/main/Arguments.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using List = std::vector<std::string>;

std::int32_t parentPIDWith(const std::string& value) {
    const List arguments{"agent", "--parent-pid", value};
    return parentPID(arguments);
}

TEST(ParentPID, isZeroWithoutAnyArgument) {
    EXPECT_EQ(parentPID(List{}), 0);
    EXPECT_EQ(parentPID(List{"agent"}), 0);
}

TEST(ParentPID, isZeroWhenNothingFollowsTheFlag) {
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid"}), 0);
}

TEST(ParentPID, readsASignedDecimalInteger) {
    const std::vector<std::pair<std::string, std::int32_t>> cases{
        {"42", 42},
        {"+42", 42},
        {"-7", -7},
        {"0", 0},
        {"+0", 0},
        {"-0", 0},
        {"1", 1},
        {"2", 2},
        {"00042", 42},
        {"-0007", -7},
        {"+007", 7},
        {"2147483647", 2147483647},
        {"-2147483648", INT32_MIN},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(parentPIDWith(text), value) << text;
}

TEST(ParentPID, isZeroForAnythingElse) {
    for (const char* const text : {"",
                                   "+",
                                   "-",
                                   "42abc",
                                   "abc",
                                   " 42",
                                   "42 ",
                                   "\t42",
                                   "42\n",
                                   "0x10",
                                   "4.2",
                                   "4e2",
                                   "1,000",
                                   "1_000",
                                   "--7",
                                   "+-7",
                                   "-+7",
                                   "++7",
                                   "- 7",
                                   "2147483648",
                                   "+2147483648",
                                   "-2147483649",
                                   "4294967296",
                                   "4294967338",
                                   "99999999999999999999999",
                                   "٤٢",
                                   "\u00A042"})
        EXPECT_EQ(parentPIDWith(text), 0) << text;
    EXPECT_EQ(parentPIDWith(std::string("42\0", 3)), 0);
}

TEST(ParentPID, standsBehindTheFirstFlagOnly) {
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid", "42", "--parent-pid", "43"}), 42);
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid", "x", "--parent-pid", "43"}), 0);
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid", "--parent-pid", "43"}), 0);
}

TEST(ParentPID, isFoundAnywhere) {
    EXPECT_EQ(parentPID(List{"--parent-pid", "42"}), 42); // the program's path counts like any argument
    EXPECT_EQ(parentPID(List{"agent", "other", "--flag", "--parent-pid", "42", "more"}), 42);
}

TEST(ParentPID, needsTheExactFlag) {
    EXPECT_EQ(parentPID(List{"agent", "--Parent-PID", "42"}), 0);
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid=42"}), 0);
    EXPECT_EQ(parentPID(List{"agent", "-parent-pid", "42"}), 0);
    EXPECT_EQ(parentPID(List{"agent", "--parent-pid ", "42"}), 0);
    EXPECT_EQ(parentPID(List{"agent", "--parent-pi", "42"}), 0);
}

TEST(TestPasteboardName, isAbsentWithoutItsFlag) {
    EXPECT_EQ(testPasteboardName(List{}), std::nullopt);
    EXPECT_EQ(testPasteboardName(List{"agent", "name"}), std::nullopt);
    EXPECT_EQ(testPasteboardName(List{"agent", "--Test-Pasteboard", "name"}), std::nullopt);
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard=name"}), std::nullopt);
}

TEST(TestPasteboardName, isAbsentWhenNothingFollowsTheFlag) {
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard"}), std::nullopt);
}

TEST(TestPasteboardName, isWhateverFollowsTheFlag) {
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", "name"}), "name");
    EXPECT_EQ(testPasteboardName(List{"--test-pasteboard", "name"}), "name");
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", ""}), "");
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", " é "}), " é ");
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", "--other"}), "--other");
}

TEST(TestPasteboardName, standsBehindTheFirstFlagOnly) {
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", "a", "--test-pasteboard", "b"}), "a");
    EXPECT_EQ(testPasteboardName(List{"agent", "--test-pasteboard", "--test-pasteboard", "b"}),
              "--test-pasteboard");
}

TEST(Arguments, areLookedThroughForEachFlagApart) {
    const List nameIsAFlag{"agent", "--test-pasteboard", "--parent-pid", "42"};
    EXPECT_EQ(testPasteboardName(nameIsAFlag), "--parent-pid");
    EXPECT_EQ(parentPID(nameIsAFlag), 42);
    const List valueIsAFlag{"agent", "--parent-pid", "--test-pasteboard", "name"};
    EXPECT_EQ(parentPID(valueIsAFlag), 0);
    EXPECT_EQ(testPasteboardName(valueIsAFlag), "name");
}

} // namespace
} // namespace tavel
