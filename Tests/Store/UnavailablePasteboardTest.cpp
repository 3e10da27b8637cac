#include "Platform/UnavailablePasteboard.h"

#include "Platform/PasteboardTypes.h"

#include <gtest/gtest.h>

#include <array>

namespace tavel {

namespace {

std::vector<PasteboardItem> oneItem() {
    return {{{std::string(pasteboardType::string), Bytes::copyOf("text")}}};
}

} // namespace

TEST(UnavailablePasteboard, refusesEveryWrite) {
    UnavailablePasteboard pasteboard;
    pasteboard.clearContents();
    EXPECT_FALSE(pasteboard.setString("text", pasteboardType::string));
    EXPECT_FALSE(pasteboard.setData(Bytes::copyOf("data"), pasteboardType::png));
    EXPECT_FALSE(pasteboard.writeItems(oneItem()));
    EXPECT_FALSE(pasteboard.addTypes(oneItem().front()));
    EXPECT_TRUE(pasteboard.canHold(oneItem().front().front())) << "the content is not to blame";
}

TEST(UnavailablePasteboard, isEmptyAndNeverChanges) {
    UnavailablePasteboard pasteboard;
    const std::int64_t before = pasteboard.changeCount();
    EXPECT_EQ(pasteboard.clearContents(), before);
    pasteboard.setString("text", pasteboardType::string);
    pasteboard.addTypes(oneItem().front());
    EXPECT_EQ(pasteboard.changeCount(), before);
    EXPECT_TRUE(pasteboard.types().empty());
    EXPECT_EQ(pasteboard.availableType(std::array{pasteboardType::string}), std::nullopt);
    EXPECT_FALSE(pasteboard.string(pasteboardType::string));
    EXPECT_FALSE(pasteboard.data(pasteboardType::string));
    EXPECT_TRUE(pasteboard.filePaths().empty());
}

TEST(UnavailablePasteboard, runsTheStepsOfAnUpdateAndFailsWithThem) {
    UnavailablePasteboard pasteboard;
    bool ran = false;
    EXPECT_FALSE(pasteboard.update([&] {
        ran = true;
        pasteboard.clearContents();
        return pasteboard.setString("text", pasteboardType::string);
    }));
    EXPECT_TRUE(ran);
    EXPECT_TRUE(pasteboard.update([] { return true; })) << "nothing was to be written";
}

} // namespace tavel
