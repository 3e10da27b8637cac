#include "Linux/X11/Keyboard/KeyDecision.h"

#include <gtest/gtest.h>

#include <thread>

namespace tavel {

namespace {

using namespace std::chrono_literals;

KeyDecision::Clock::time_point in(std::chrono::milliseconds time) {
    return KeyDecision::Clock::now() + time;
}

TEST(KeyDecision, givesTheVerdictToWhoeverWaits) {
    for (const KeyVerdict verdict : {KeyVerdict::pass, KeyVerdict::swallow}) {
        KeyDecision decision(in(60s));
        std::thread other([&] {
            EXPECT_TRUE(decision.claim());
            EXPECT_TRUE(decision.answer(verdict));
        });
        EXPECT_EQ(decision.await(), verdict);
        other.join();
    }
}

TEST(KeyDecision, isKnownWhenItIsMadeBeforeAnybodyWaits) {
    KeyDecision decision(in(60s));
    EXPECT_TRUE(decision.claim());
    EXPECT_TRUE(decision.answer(KeyVerdict::swallow));
    EXPECT_EQ(decision.await(), KeyVerdict::swallow);
}

TEST(KeyDecision, isToPassWhenNobodyClaimsIt) {
    KeyDecision decision(in(1ms));
    EXPECT_EQ(decision.await(), KeyVerdict::pass);
    EXPECT_FALSE(decision.claim());
    EXPECT_FALSE(decision.answer(KeyVerdict::swallow));
}

TEST(KeyDecision, isNotClaimedAfterItsDeadlineEvenIfNobodyWaited) {
    KeyDecision decision(in(0ms));
    EXPECT_FALSE(decision.claim());
}

TEST(KeyDecision, isClaimedOnce) {
    KeyDecision decision(in(60s));
    EXPECT_TRUE(decision.claim());
    EXPECT_FALSE(decision.claim());
}

TEST(KeyDecision, isGivenUpSomeTimeAfterTheDeadlineWhenItWasClaimed) {
    const auto deadline = in(50ms);
    KeyDecision decision(deadline);
    ASSERT_TRUE(decision.claim());
    EXPECT_EQ(decision.await(), KeyVerdict::pass);
    EXPECT_GE(KeyDecision::Clock::now(), deadline + KeyDecision::grace);
    EXPECT_FALSE(decision.answer(KeyVerdict::swallow));
    EXPECT_EQ(decision.await(), KeyVerdict::pass);
}

TEST(KeyDecision, passesWhenItIsGivenUpBeforeAnybodyDecided) {
    for (const bool claimed : {false, true}) {
        KeyDecision decision(in(60s));
        ASSERT_TRUE(!claimed || decision.claim());
        std::thread other([&] { decision.giveUp(); });
        EXPECT_EQ(decision.await(), KeyVerdict::pass);
        other.join();
        EXPECT_FALSE(decision.claim());
        EXPECT_FALSE(decision.answer(KeyVerdict::swallow));
    }
}

TEST(KeyDecision, keepsItsVerdictWhenItIsGivenUpLater) {
    KeyDecision decision(in(60s));
    ASSERT_TRUE(decision.claim());
    ASSERT_TRUE(decision.answer(KeyVerdict::swallow));
    decision.giveUp();
    EXPECT_EQ(decision.await(), KeyVerdict::swallow);
}

} // namespace

} // namespace tavel
