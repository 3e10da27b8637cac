#include "Pasteboard/Gathered.h"

#include "Platform/PasteboardTypes.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"
#include "Tests/Unit/Doubles/ScriptedPasteboard.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tavel {

namespace {

class GatheredTest : public testing::Test {
protected:
    GatheredTest() {
        pasteboard_.holdValues();
        pasteboard_.tellNews();
        pasteboard_.holdNews();
        pasteboard_.copyFromOutside("a");
    }

    static WantedValue text() { return {std::string(pasteboardType::string), 100}; }

    /// The text that `gathered` reads. nullopt if none is there.
    std::optional<std::string> textOf(Gathered& gathered) {
        std::optional<std::string> read;
        gathered.awaitValue(text(), [&] {
            static_cast<void>(pasteboard_.types());
            if (const auto value = pasteboard_.string(pasteboardType::string, 100))
                read = value->view();
        });
        return read;
    }

    ManualEventLoop loop_;
    ScriptedPasteboard pasteboard_;
};

TEST_F(GatheredTest, WaitsForTheTypes) {
    Gathered gathered(loop_, pasteboard_);
    loop_.planPass([] {}); // something else is served
    loop_.planPass([this] { pasteboard_.notice(); });
    gathered.awaitTypes();
    EXPECT_EQ(loop_.passes(), 2U);
    gathered.awaitTypes();
    EXPECT_EQ(loop_.passes(), 2U);
}

TEST_F(GatheredTest, WaitsForTheTypesAndThenForTheValues) {
    Gathered gathered(loop_, pasteboard_);
    loop_.planPass([this] { pasteboard_.notice(); });
    loop_.planPass([this] { pasteboard_.deliver(); });
    EXPECT_EQ(textOf(gathered), "a");
}

TEST_F(GatheredTest, TakesTheContentThatReplacesTheAwaitedOne) {
    Gathered gathered(loop_, pasteboard_);
    loop_.planPass([this] { pasteboard_.notice(); });
    loop_.planPass([this] {
        pasteboard_.copyFromOutside("b");
        pasteboard_.deliver();
    });
    loop_.planPass([this] { pasteboard_.notice(); });
    loop_.planPass([this] { pasteboard_.deliver(); });
    EXPECT_EQ(textOf(gathered), "b");
}

TEST_F(GatheredTest, DoesNotWaitWithoutNews) {
    ScriptedPasteboard other;
    other.holdNews(7);
    Gathered(loop_, other).awaitValue(text(), [] {});
    EXPECT_EQ(loop_.passes(), 0U);
}

} // namespace

} // namespace tavel
