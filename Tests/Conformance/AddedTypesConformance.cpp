#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

TEST_P(PasteboardConformance, addedTypesJoinTheFirstItemOfAnotherProgramsContent) {
    copyItems(*theirs,
              Items{{representation(pasteboardType::string, "first"), representation(someType, "some")},
                    textItem("second")});
    const std::int64_t before = ours->changeCount();
    EXPECT_EQ(
        ours->addTypes(std::vector{representation(markerType, "marker"), representation(otherType, "other")}),
        before + 1)
        << "one change, however many types";
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "first\nsecond");
    EXPECT_EQ(dataOf(*theirs, someType), "some");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
    EXPECT_EQ(dataOf(*theirs, otherType), "other");
    EXPECT_EQ(typesOf(*theirs), (std::vector{std::string(pasteboardType::string), std::string(someType),
                                             std::string(markerType), std::string(otherType)}));
}

TEST_P(ItemConformance, addedTypesReplaceThoseOfTheFirstItemOnly) {
    copyItems(*theirs, Items{textItem("first"), textItem("second")});
    EXPECT_TRUE(ours->addTypes(std::vector{representation(pasteboardType::string, "replaced")}));
    EXPECT_EQ(textOf(*theirs), "replaced\nsecond");
    EXPECT_EQ(typesOf(*theirs), std::vector{std::string(pasteboardType::string)});
}

TEST_P(PasteboardConformance, typesCanBeAddedToOnesOwnContent) {
    copyText(*ours, "text");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->addTypes(std::vector{representation(markerType, "marker")}));
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "text");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
}

TEST_P(PasteboardConformance, typesCanBeAddedAgainByAnyObject) {
    copyText(*ours, "text");
    const auto second = backend->open(name);
    EXPECT_TRUE(second->addTypes(std::vector{representation(markerType, "one")}));
    EXPECT_TRUE(theirs->addTypes(std::vector{representation(markerType, "two")}));
    EXPECT_EQ(textOf(*ours, markerType), "two");
    EXPECT_EQ(textOf(*ours), "text");
}

TEST_P(PasteboardConformance, nothingCanBeAddedToAnEmptyPasteboard) {
    const std::vector marker{representation(markerType, "marker")};
    const std::int64_t fresh = ours->changeCount();
    EXPECT_FALSE(ours->addTypes(marker));
    EXPECT_EQ(ours->changeCount(), fresh);
    clear(*theirs);
    const std::int64_t cleared = theirs->changeCount();
    EXPECT_FALSE(ours->addTypes(marker));
    EXPECT_FALSE(theirs->addTypes(marker));
    EXPECT_EQ(ours->changeCount(), cleared);
    EXPECT_TRUE(theirs->types().empty());
}

TEST_P(PasteboardConformance, addingTypesWithoutAnyOrWithoutANameChangesNothing) {
    copyText(*theirs, "text");
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->addTypes({}));
    EXPECT_FALSE(
        ours->addTypes(std::vector{representation(someType, "good"), representation("", "nameless")}));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(typesOf(*theirs), std::vector{std::string(pasteboardType::string)});
}

} // namespace tavel
