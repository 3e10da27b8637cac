#include "Linux/X11/Focus/FocusCache.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

const AccessibleElement view{":1.1", "/view"};
const AccessibleElement entry{":1.1", "/entry"};
const AccessibleElement icon{":1.1", "/icon"};
const AccessibleElement sameViewElsewhere{":1.2", "/view"};

TEST(FocusCache, knowsNothingAtFirst) {
    const FocusCache cache;
    EXPECT_EQ(cache.current(), std::nullopt);
    EXPECT_EQ(cache.previous(), std::nullopt);
    EXPECT_EQ(cache.newsCount(), 0U);
}

TEST(FocusCache, holdsTheElementThatGainedTheFocusLast) {
    FocusCache cache;
    cache.gained(view);
    EXPECT_EQ(cache.current(), view);
    cache.gained(entry);
    EXPECT_EQ(cache.current(), entry);
    cache.gained(view);
    EXPECT_EQ(cache.current(), view);
    EXPECT_EQ(cache.newsCount(), 3U);
}

TEST(FocusCache, knowsNothingOnceThatHasLostIt) {
    FocusCache cache;
    cache.gained(entry);
    cache.gained(view);
    cache.lost(view);
    EXPECT_EQ(cache.current(), std::nullopt); // not the entry, whose loss may be unreported
    EXPECT_EQ(cache.previous(), std::nullopt);
}

TEST(FocusCache, takesNoLossOfAnotherElementForThatOfTheLast) {
    FocusCache cache;
    cache.gained(view);
    cache.lost(entry);
    cache.lost(sameViewElsewhere);
    EXPECT_EQ(cache.current(), view);
    EXPECT_EQ(cache.newsCount(), 3U);
}

TEST(FocusCache, takesALossThatIsToldAfterTheNextGain) {
    FocusCache cache;
    cache.gained(view);
    cache.gained(entry);
    cache.lost(view);
    EXPECT_EQ(cache.current(), entry);
    EXPECT_EQ(cache.previous(), std::nullopt);
}

TEST(FocusCache, knowsWhichElementOfTheSameProgramKeptTheFocus) {
    FocusCache cache;
    cache.gained(view);
    cache.gained(sameViewElsewhere);
    EXPECT_EQ(cache.previous(), std::nullopt);
    cache.gained(entry);
    cache.gained(icon);
    EXPECT_EQ(cache.previous(), entry);
    cache.lost(entry);
    EXPECT_EQ(cache.previous(), view);
}

TEST(FocusCache, forgetsTheOldestOfManyThatNeverLostIt) {
    FocusCache cache;
    cache.gained(view);
    for (int number = 1; number <= 6; ++number)
        cache.gained({":1.2", "/" + std::to_string(number)});
    cache.gained(icon);
    EXPECT_EQ(cache.previous(), view); // one of the eight that are remembered
    cache.gained({":1.2", "/7"});
    cache.gained(icon);
    EXPECT_EQ(cache.current(), icon);
    EXPECT_EQ(cache.previous(), std::nullopt);
}

TEST(FocusCache, takesWhatWasFoundWhileThereWereNoNews) {
    FocusCache cache;
    cache.found(view, 0);
    EXPECT_EQ(cache.current(), view);
    cache.lost(view);
    EXPECT_EQ(cache.current(), std::nullopt);
    cache.found(entry, 1);
    EXPECT_EQ(cache.current(), entry);
}

TEST(FocusCache, prefersNewsToWhatWasFoundMeanwhile) {
    FocusCache cache;
    const std::uint64_t begin = cache.newsCount();
    cache.gained(entry);
    cache.found(view, begin);
    EXPECT_EQ(cache.current(), entry);
    cache.lost(entry);
    cache.found(view, begin);
    EXPECT_EQ(cache.current(), std::nullopt);
}

} // namespace

} // namespace tavel
