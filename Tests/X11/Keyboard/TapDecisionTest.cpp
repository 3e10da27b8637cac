#include "Tests/X11/Keyboard/TappedDesktop.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <iterator>
#include <utility>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto down = KeyEventType::keyDown;
constexpr auto up = KeyEventType::keyUp;
constexpr ReceivedKey pressedV{pcKey::v, true};
constexpr ReceivedKey releasedV{pcKey::v, false};

class TapDecision : public TappedDesktop {
protected:
    void passEverything() {
        decide_ = [](const KeyEvent&) { return KeyVerdict::pass; };
    }

    std::size_t seenPresses() const {
        return static_cast<std::size_t>(std::ranges::count(seen_, down, &KeyEvent::type));
    }
};

TEST_F(TapDecision, aSwallowedKeyDoesNotReachTheProgram) {
    const auto window = startInFileManager();
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    settle(window);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 0);
    EXPECT_THAT(seenTypes(), ElementsAre(down, up));
    for (const KeyEvent& event : seen_) {
        EXPECT_EQ(event.keyCode, keyCode::v);
        EXPECT_EQ(event.flags, keyFlag::command);
        EXPECT_EQ(event.userData, 0);
    }
}

TEST_F(TapDecision, aPassedKeyReachesTheProgram) {
    const auto window = startInFileManager();
    passEverything();
    desktop_.type({pcKey::leftControl, pcKey::v});
    settle(window);
    EXPECT_THAT(desktop_.received(window, pcKey::v), ElementsAre(pressedV, releasedV));
    EXPECT_THAT(seenTypes(), ElementsAre(down));
}

TEST_F(TapDecision, everyPressIsDecidedAnew) {
    const auto window = startInFileManager();
    KeyVerdict next = KeyVerdict::pass;
    decide_ = [&next](const KeyEvent& event) {
        if (event.type != down)
            return KeyVerdict::pass;
        return std::exchange(next, next == KeyVerdict::pass ? KeyVerdict::swallow : KeyVerdict::pass);
    };
    for (int time = 0; time < 20; ++time) {
        desktop_.type({pcKey::leftControl, pcKey::v});
        settle(window);
    }
    awaitEvents(30);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 10);
    EXPECT_EQ(seen_.size(), 30);
}

TEST_F(TapDecision, aSwallowedKeyIsReportedUntilItIsReleased) {
    const auto window = startInFileManager();
    desktop_.repeatKeys(true);
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(4);
    EXPECT_EQ(seenPresses(), seen_.size());
    desktop_.release(pcKey::leftControl);
    runUntil([&] { return seen_.back().flags == 0; });
    awaitEvents(seen_.size() + 3); // the repeats go on without Control
    desktop_.release(pcKey::v);
    runUntil([&] { return seen_.back().type == up; });
    settle(window);
    EXPECT_EQ(seenPresses(), seen_.size() - 1);
    EXPECT_EQ(seen_.back().type, up);
    EXPECT_FALSE(seen_.front().isRepeat);
    EXPECT_EQ(std::ranges::count(seen_, true, &KeyEvent::isRepeat), std::ssize(seen_) - 2);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 0);
}

TEST_F(TapDecision, otherKeysBesideASwallowedOneReachTheProgram) {
    const auto window = startInFileManager();
    desktop_.repeatKeys(true);
    std::vector<ReceivedKey> expected;
    const auto typeKeys = [&](std::uint8_t first) {
        for (std::uint8_t code = first; code < first + 6; ++code) {
            desktop_.type({code});
            expected.insert(expected.end(), {{code, true}, {code, false}});
        }
    };
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    typeKeys(24); // while the keyboard waits for the decision
    awaitEvents(1);
    typeKeys(30);
    desktop_.release(pcKey::leftControl);
    typeKeys(40);
    desktop_.release(pcKey::v);
    typeKeys(24);
    runUntil([&] { return seen_.back().type == up; });
    desktop_.repeatKeys(false);
    settle(window);
    std::vector<ReceivedKey> received = desktop_.received(window);
    std::erase_if(received, [](const ReceivedKey& key) {
        return key.code == pcKey::leftControl || key.code == pcKey::v || key.code == pcKey::a;
    });
    EXPECT_EQ(received, expected);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 0);
    EXPECT_EQ(seenPresses(), seen_.size() - 1) << "one release";
    EXPECT_FALSE(desktop_.received(window, pcKey::leftControl).back().isDown);
}

TEST_F(TapDecision, theSameKeyReachesTheProgramAfterTheReleaseOfASwallowedOne) {
    const auto window = startInFileManager();
    for (std::size_t time = 1; time <= 50; ++time) {
        desktop_.type({pcKey::leftControl, pcKey::v});
        desktop_.type({pcKey::v});
        awaitEvents(2 * time);
        settle(window);
        ASSERT_EQ(desktop_.pressesOf(window, pcKey::v), time);
    }
    EXPECT_EQ(seen_.size(), 100);
}

TEST_F(TapDecision, aHeldKeyThatPassesReachesTheProgramWithItsRepeats) {
    const auto window = startInFileManager();
    passEverything();
    desktop_.repeatKeys(true);
    desktop_.press(pcKey::leftControl);
    desktop_.press(pcKey::v);
    awaitEvents(4);
    desktop_.release(pcKey::v);
    desktop_.release(pcKey::leftControl);
    settle(window);
    const auto received = desktop_.received(window, pcKey::v);
    EXPECT_EQ(std::ranges::count(received, pressedV), seen_.size());
    EXPECT_EQ(seenPresses(), seen_.size());
    EXPECT_EQ(received.back(), releasedV);
}

class TapDecisionWithLocks : public TapDecision,
                             public testing::WithParamInterface<std::vector<std::uint8_t>> {};

TEST_P(TapDecisionWithLocks, theKeyIsSeenAsWithoutThem) {
    const auto window = startInFileManager();
    for (const std::uint8_t lock : GetParam())
        desktop_.type({lock});
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    settle(window);
    EXPECT_THAT(seenTypes(), ElementsAre(down, up));
    EXPECT_EQ(seen_.front().flags, keyFlag::command);
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 0);
}

INSTANTIATE_TEST_SUITE_P(Locks, TapDecisionWithLocks,
                         testing::Values(std::vector{pcKey::capsLock}, std::vector{pcKey::numLock},
                                         std::vector{pcKey::capsLock, pcKey::numLock}));

TEST_F(TapDecision, otherCombinationsPassUnseen) {
    const auto window = startInFileManager();
    desktop_.type({pcKey::v});
    desktop_.type({pcKey::leftShift, pcKey::v});
    desktop_.type({pcKey::leftSuper, pcKey::v});
    desktop_.type({pcKey::leftControl, pcKey::leftShift, pcKey::v});
    desktop_.type({pcKey::leftControl, pcKey::leftAlt, pcKey::v});
    desktop_.type({pcKey::leftControl, pcKey::leftSuper, pcKey::v});
    desktop_.type({pcKey::leftControl, pcKey::a});
    EXPECT_THAT(seen_, IsEmpty());
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    EXPECT_THAT(seenTypes(), ElementsAre(down, up)) << "of the last one";
    EXPECT_EQ(desktop_.pressesOf(window, pcKey::v), 6) << "of all before";
}

TEST_F(TapDecision, theHandlerIsUnderTheDeadlineWhileTheKeyboardWaits) {
    startInFileManager();
    const auto before = DecisionDeadline::Clock::now();
    std::vector<bool> deciding;
    auto limit = DecisionDeadline::Clock::time_point::min();
    decide_ = [&](const KeyEvent& event) {
        deciding.push_back(deadline_.isDeciding());
        if (event.type == down)
            limit = deadline_.limit(DecisionDeadline::Clock::time_point::max());
        return KeyVerdict::swallow;
    };
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    EXPECT_THAT(deciding, ElementsAre(true, false));
    EXPECT_FALSE(deadline_.isDeciding());
    EXPECT_GE(limit, before + noHurry);
    EXPECT_LE(limit, DecisionDeadline::Clock::now() + noHurry);
}

TEST_F(TapDecision, aKeyPassesWhenTheMainThreadDoesNotComeToIt) {
    const auto window = startInFileManager(X11KeyboardTap::usualDecisionTime);
    const auto begin = std::chrono::steady_clock::now();
    desktop_.type({pcKey::leftControl, pcKey::v});
    // The event loop does not run meanwhile.
    while (desktop_.received(window, pcKey::v).size() < 2 &&
           std::chrono::steady_clock::now() < begin + timeOut)
        desktop_.synchronize();
    EXPECT_GE(std::chrono::steady_clock::now(), begin + X11KeyboardTap::usualDecisionTime);
    EXPECT_THAT(desktop_.received(window, pcKey::v), ElementsAre(pressedV, releasedV));
    runPosted();
    EXPECT_THAT(seen_, IsEmpty()) << "the decision is late by now";
}

TEST_F(TapDecision, anOverdueSwallowIsFollowedByATimeout) {
    const auto window = startInFileManager(std::chrono::seconds(1));
    int decisions = 0;
    decide_ = [&](const KeyEvent& event) {
        if (event.type != down || ++decisions > 1)
            return KeyVerdict::swallow;
        const auto end = std::chrono::steady_clock::now() + timeOut;
        while (desktop_.received(window, pcKey::v).empty() && std::chrono::steady_clock::now() < end)
            desktop_.synchronize();
        return KeyVerdict::swallow;
    };
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(2);
    settle(window);
    EXPECT_THAT(seenTypes(), ElementsAre(down, KeyEventType::tapDisabledByTimeout));
    EXPECT_THAT(desktop_.received(window, pcKey::v), ElementsAre(pressedV, releasedV));

    // The tap stays active.
    runUntil([&] {
        desktop_.type({pcKey::leftControl, pcKey::v});
        runPosted();
        return decisions > 1;
    });
}

TEST_F(TapDecision, anOverduePassIsNoTimeout) {
    const auto window = startInFileManager(std::chrono::seconds(1));
    decide_ = [&](const KeyEvent&) {
        const auto end = std::chrono::steady_clock::now() + timeOut;
        while (desktop_.received(window, pcKey::v).empty() && std::chrono::steady_clock::now() < end)
            desktop_.synchronize();
        return KeyVerdict::pass;
    };
    desktop_.type({pcKey::leftControl, pcKey::v});
    awaitEvents(1);
    settle(window);
    EXPECT_THAT(seenTypes(), ElementsAre(down));
    EXPECT_THAT(desktop_.received(window, pcKey::v), ElementsAre(pressedV, releasedV));
}

} // namespace

} // namespace tavel
