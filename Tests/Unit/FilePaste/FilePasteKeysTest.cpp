#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <ios>
#include <vector>

namespace tavel {
namespace {

// The key events that the feature examines before it queries the focus and the pasteboard.

constexpr std::uint64_t shift = 0x20000;
constexpr std::uint64_t control = 0x40000;
constexpr std::uint64_t option = 0x80000;

class FilePasteKeys : public FilePasteFixture {
protected:
    FilePasteKeys() {
        switchOn();
        platform.focus.onAsked = [this] { ++askedForFocus; };
        pasteboard().onCountRead([this] { ++countsRead; });
    }

    /// Whether the event passed without a query to the focus probe or the pasteboard.
    bool passesUnexamined(const KeyEvent& event) {
        pasteboard().forgetCalls();
        askedForFocus = 0;
        countsRead = 0;
        return type(event) == KeyVerdict::pass && pasteboard().calls().empty() && askedForFocus == 0 &&
               countsRead == 0;
    }

    int askedForFocus = 0;
    int countsRead = 0;
};

TEST_F(FilePasteKeys, takesCommandAndV) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(askedForFocus, 1);
    EXPECT_EQ(platform.focus.askedForRole, std::vector{fileManager});
}

TEST_F(FilePasteKeys, takesCommandWithoutOtherModifiersOnly) {
    for (std::uint64_t bits = 0; bits < 16; ++bits) {
        const std::uint64_t flags =
            bits * shift; // the bits of Shift, Control, Option and Command are adjacent
        const KeyEvent event{KeyEventType::keyDown, 9, flags, 0};
        if (flags == command)
            continue;
        EXPECT_TRUE(passesUnexamined(event)) << std::hex << flags;
    }
    EXPECT_EQ(type({KeyEventType::keyDown, 9, command, 0}), KeyVerdict::swallow);
}

TEST_F(FilePasteKeys, ignoresAllOtherFlags) {
    constexpr std::array<std::uint64_t, 6> irrelevant{0x10000, 0x800000, 0x200000, 0x8, 0x10, 0x100};
    for (std::size_t subset = 0; subset < (1U << irrelevant.size()); ++subset) {
        std::uint64_t others = 0;
        for (std::size_t i = 0; i < irrelevant.size(); ++i)
            others |= (subset >> i & 1U) != 0 ? irrelevant[i] : 0;
        EXPECT_EQ(type({KeyEventType::keyDown, 9, command | others, 0}), KeyVerdict::swallow)
            << std::hex << others;
        startOver();
        for (const std::uint64_t wrong : {std::uint64_t{0}, command | shift, control, command | option})
            EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 9, wrong | others, 0}))
                << std::hex << others;
    }
}

TEST_F(FilePasteKeys, examinesNoOtherKey) {
    for (std::int64_t key = -1; key < 256; ++key) {
        if (key == 9)
            continue;
        EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, key, command, 0})) << key;
    }
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 9 + (std::int64_t{1} << 32), command, 0}));
}

TEST_F(FilePasteKeys, examinesNoReleaseOfAKeyThatItDidNotTake) {
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyUp, 9, command, 0}));
    EXPECT_EQ(press(), KeyVerdict::swallow) << "and it changes nothing";
}

TEST_F(FilePasteKeys, examinesNothingWhileSwitchedOff) {
    switchOff();
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 9, command, 0}));
    switchOn();
    EXPECT_EQ(press(), KeyVerdict::swallow);
}

TEST_F(FilePasteKeys, neverExaminesItsOwnKeys) {
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 9, command, ownMark}));
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyUp, 9, command, ownMark}));
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 55, command, ownMark}));
    EXPECT_FALSE(isPanelOpen());
}

TEST_F(FilePasteKeys, takesKeysThatOtherProgramsPost) {
    for (const std::int64_t userData :
         {std::int64_t{1}, ownMark - 1, ownMark + 1, -ownMark, ownMark + (std::int64_t{1} << 32)}) {
        EXPECT_EQ(type({KeyEventType::keyDown, 9, command, userData}), KeyVerdict::swallow) << userData;
        startOver();
    }
}

TEST_F(FilePasteKeys, letsItsOwnKeysThroughWhileItSwallowsTheUsersPress) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyDown, 9, command, ownMark}));
    EXPECT_TRUE(passesUnexamined({KeyEventType::keyUp, 9, command, ownMark}));
    EXPECT_EQ(repeat(), KeyVerdict::swallow) << "its own release is not the user's";
    EXPECT_EQ(release(), KeyVerdict::swallow);
}

TEST_F(FilePasteKeys, enableTheTapAgainAfterTheSystemDisabledIt) {
    for (const KeyEventType why :
         {KeyEventType::tapDisabledByTimeout, KeyEventType::tapDisabledByUserInput}) {
        platform.tap.enabled.clear();
        EXPECT_TRUE(passesUnexamined({why, 0, 0, 0}));
        EXPECT_EQ(platform.tap.enabled, std::vector{true});
        EXPECT_TRUE(passesUnexamined({why, 9, command, ownMark})) << "whatever else the event holds";
        EXPECT_EQ(platform.tap.enabled, (std::vector{true, true}));
    }
}

TEST_F(FilePasteKeys, leaveTheTapOffAfterTheUserSwitchedItOff) {
    switchOff();
    platform.tap.enabled.clear();
    for (const KeyEventType why : {KeyEventType::tapDisabledByTimeout, KeyEventType::tapDisabledByUserInput})
        EXPECT_TRUE(passesUnexamined({why, 0, 0, 0}));
    EXPECT_EQ(platform.tap.enabled, std::vector<bool>());
}

TEST_F(FilePasteKeys, reportADisabledTapEvenWithTheSwallowedKey) {
    EXPECT_EQ(press(), KeyVerdict::swallow);
    EXPECT_EQ(type({KeyEventType::tapDisabledByUserInput, 9, 0, 0}), KeyVerdict::pass);
    EXPECT_EQ(repeat(), KeyVerdict::swallow) << "still the same press";
}

} // namespace
} // namespace tavel
