#include "Platform/UnavailablePasteboard.h"

#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"

#include <gtest/gtest.h>

namespace tavel {

namespace {

std::vector<PasteboardItem> oneItem() {
    return {{{std::string(pasteboardType::string), Bytes::copyOf("text")}}};
}

} // namespace

TEST(UnavailablePasteboard, refusesEveryWrite) {
    UnavailablePasteboard pasteboard;
    const PasteboardValue value{std::string(pasteboardType::string), PasteboardValue::Form::text,
                                Bytes::copyOf("text")};
    EXPECT_FALSE(pasteboard.replaceWithValues({&value, 1}));
    EXPECT_FALSE(pasteboard.replaceWithValues({}));
    EXPECT_FALSE(pasteboard.replaceWithItems(oneItem()));
    EXPECT_FALSE(pasteboard.addTypes(oneItem().front()));
    EXPECT_TRUE(pasteboard.canHold(oneItem().front().front())) << "the content is not to blame";
}

TEST(UnavailablePasteboard, isEmptyAndNeverChanges) {
    UnavailablePasteboard pasteboard;
    EXPECT_TRUE(pasteboard.watch({}, [] { FAIL() << "no change"; })) << "nobody has to poll it";
    const std::int64_t before = pasteboard.changeCount();
    pasteboard.replaceWithItems(oneItem());
    pasteboard.addTypes(oneItem().front());
    EXPECT_EQ(pasteboard.changeCount(), before);
    EXPECT_EQ(pasteboard.noticedChangeCount(), before);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_FALSE(pasteboard.string(pasteboardType::string, ample));
    EXPECT_FALSE(pasteboard.data(pasteboardType::string, ample));
    EXPECT_TRUE(pasteboard.files(everyFile).paths.empty());
}

} // namespace tavel
