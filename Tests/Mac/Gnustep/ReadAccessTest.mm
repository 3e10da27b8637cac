#include "Mac/MacPasteboard.h"
#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"

#include <gtest/gtest.h>

namespace tavel {
namespace {

// What the user permits this program to read (macOS 15.4 and later).

constexpr std::string_view someType = "net.example.some";

class PasteboardReadAccess : public testing::Test {
protected:
    PasteboardReadAccess() { tavelDataReads = 0; }
    ~PasteboardReadAccess() override {
        tavelAccessBehavior = NSPasteboardAccessBehaviorDefault;
        [MacPasteboard::named(name_) releaseGlobally];
    }

    void fill() {
        const PasteboardItem item{{std::string(pasteboardType::string), Bytes::copyOf("text")},
                                  {std::string(someType), Bytes::copyOf("some")},
                                  {std::string(pasteboardType::fileUrl), Bytes::copyOf("file:///nowhere")}};
        ASSERT_TRUE(pasteboard_.replaceWithItems({&item, 1}));
        tavelDataReads = 0;
    }

    static ReadAccess accessTo(MacPasteboard& pasteboard, NSPasteboardAccessBehavior behavior) {
        tavelAccessBehavior = behavior;
        return pasteboard.readAccess();
    }

    std::string name_ = "net.example.test.access";
    MacPasteboard pasteboard_{name_};
};

TEST_F(PasteboardReadAccess, isWhatTheUserChose) {
    EXPECT_EQ(accessTo(pasteboard_, NSPasteboardAccessBehaviorAsk), ReadAccess::asks);
    EXPECT_EQ(accessTo(pasteboard_, NSPasteboardAccessBehaviorAlwaysAllow), ReadAccess::free);
    EXPECT_EQ(accessTo(pasteboard_, NSPasteboardAccessBehaviorAlwaysDeny), ReadAccess::denied);
    EXPECT_EQ(tavelDataReads, 0U);
}

TEST_F(PasteboardReadAccess, isNotFreeByDefaultOnTheGeneralPasteboardAlone) {
    MacPasteboard general(std::nullopt);
    EXPECT_EQ(accessTo(general, NSPasteboardAccessBehaviorDefault), ReadAccess::asks);
    EXPECT_EQ(accessTo(pasteboard_, NSPasteboardAccessBehaviorDefault), ReadAccess::free);
    EXPECT_EQ(accessTo(general, NSPasteboardAccessBehaviorAlwaysAllow), ReadAccess::free);
}

TEST_F(PasteboardReadAccess, thatIsDeniedMakesNoRequest) {
    fill();
    tavelAccessBehavior = NSPasteboardAccessBehaviorAlwaysDeny;
    EXPECT_FALSE(pasteboard_.string(pasteboardType::string, ample));
    EXPECT_FALSE(pasteboard_.string(someType, ample));
    EXPECT_FALSE(pasteboard_.data(someType, ample));
    EXPECT_TRUE(pasteboard_.files(everyFile).paths.empty());
    EXPECT_EQ(tavelDataReads, 0U);
    EXPECT_TRUE(pasteboardType::isOffered(pasteboard_.types(), someType));
    tavelAccessBehavior = NSPasteboardAccessBehaviorAsk;
    EXPECT_TRUE(pasteboard_.string(pasteboardType::string, ample));
    EXPECT_TRUE(pasteboard_.string(someType, ample));
    EXPECT_TRUE(pasteboard_.data(someType, ample));
    EXPECT_EQ(pasteboard_.files(everyFile).paths.size(), 1U);
    EXPECT_EQ(tavelDataReads, 4U);
}

TEST_F(PasteboardReadAccess, isNotNeededToSeeThatThereAreNoFiles) {
    const PasteboardItem item{{std::string(pasteboardType::string), Bytes::copyOf("text")}};
    ASSERT_TRUE(pasteboard_.replaceWithItems({&item, 1}));
    tavelDataReads = 0;
    EXPECT_TRUE(pasteboard_.files(everyFile).paths.empty());
    EXPECT_EQ(tavelDataReads, 0U);
}

} // namespace
} // namespace tavel
