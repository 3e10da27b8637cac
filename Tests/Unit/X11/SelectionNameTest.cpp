#include "Linux/X11/Selections/SelectionName.h"

#include <gtest/gtest.h>

#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace tavel {
namespace {

/// A prefix of 17 characters and a SHA-256 as 64 hexadecimal digits.
void expectMadeName(const std::string& name) {
    constexpr std::string_view prefix = "TAVEL_PASTEBOARD_";
    ASSERT_TRUE(name.starts_with(prefix)) << name;
    EXPECT_EQ(name.size(), prefix.size() + 64) << name;
    EXPECT_EQ(name.find_first_not_of("0123456789abcdef", prefix.size()), std::string::npos) << name;
}

TEST(SelectionName, isTheClipboardForTheGeneralPasteboard) {
    EXPECT_EQ(selectionNameOf(std::nullopt), "CLIPBOARD");
}

TEST(SelectionName, isThePasteboardsOwn) {
    for (const std::string name : {"test", "com.example.pasteboard", "Avec des espaces", "é 😀", "x",
                                   "PRIMARY", "\xFF not UTF-8", "line\nfeed"})
        EXPECT_EQ(selectionNameOf(name), name);
}

TEST(SelectionName, isMadeForAnEmptyName) {
    // The SHA-256 of the empty text (FIPS 180-4).
    EXPECT_EQ(selectionNameOf(""),
              "TAVEL_PASTEBOARD_e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855");
}

TEST(SelectionName, isMadeForANameWithAZeroByte) {
    for (const std::string& name : {std::string("\0", 1), std::string("a\0", 2), std::string("\0a", 2),
                                    std::string("a\0b", 3), std::string("a\0c", 3)})
        expectMadeName(selectionNameOf(name));
}

TEST(SelectionName, isThePasteboardsOwnUpToTheLengthThatAnAtomCanHave) {
    const std::string longest(65'535, 'x');
    EXPECT_EQ(selectionNameOf(longest), longest);
    expectMadeName(selectionNameOf(longest + 'x'));
}

TEST(SelectionName, differsForDifferentNames) {
    const std::set<std::string> names{"",
                                      "a",
                                      "A",
                                      std::string("a\0", 2),
                                      std::string("a\0b", 3),
                                      std::string("a\0c", 3),
                                      std::string("\0", 1),
                                      std::string("\0\0", 2),
                                      std::string(65'535, 'x'),
                                      std::string(65'536, 'x'),
                                      std::string(65'537, 'x'),
                                      std::string(65'535, 'x') + 'y'};
    std::set<std::string> selections{selectionNameOf(std::nullopt)};
    for (const std::string& name : names)
        selections.insert(selectionNameOf(name));
    EXPECT_EQ(selections.size(), names.size() + 1);
}

TEST(SelectionName, isTheSameEveryTime) {
    const std::string name(70'000, 'x');
    EXPECT_EQ(selectionNameOf(name), selectionNameOf(name));
}

} // namespace
} // namespace tavel
