#include "Pasteboard/Gathered.h"

#include "Platform/PasteboardTypes.h"
#include "Tests/Unit/Doubles/ManualEventLoop.h"
#include "Tests/Unit/Doubles/ScriptedPasteboard.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

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

    static std::vector<WantedValue> text() { return {{std::string(pasteboardType::string), 100}}; }

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
    gathered.awaitValues(text());
    static_cast<void>(pasteboard_.types());
    EXPECT_TRUE(pasteboard_.string(pasteboardType::string, 100));
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
    gathered.awaitValues(text());
    static_cast<void>(pasteboard_.types());
    EXPECT_EQ(pasteboard_.string(pasteboardType::string, 100).value().view(), "b");
}

TEST_F(GatheredTest, DoesNotWaitWithoutNews) {
    ScriptedPasteboard other;
    other.holdNews(7);
    Gathered(loop_, other).awaitValues(text());
    EXPECT_EQ(loop_.passes(), 0U);
}

} // namespace

} // namespace tavel
