#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

namespace tavel {

TEST_P(PasteboardConformance, addedTypesJoinTheFirstItemOfAnotherProgramsContent) {
    theirs->clearContents();
    ASSERT_TRUE(theirs->writeItems(
        Items{{representation(pasteboardType::string, "first"), representation(someType, "some")},
              textItem("second")}));
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->addTypes(
        std::vector{representation(markerType, "marker"), representation(otherType, "other")}));
    EXPECT_EQ(ours->changeCount(), before + 1) << "one change, however many types";
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "first\nsecond");
    EXPECT_EQ(dataOf(*theirs, someType), "some");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
    EXPECT_EQ(dataOf(*theirs, otherType), "other");
    EXPECT_EQ(theirs->types(), (std::vector{std::string(pasteboardType::string), std::string(someType),
                                            std::string(markerType), std::string(otherType)}));
}

TEST_P(ItemConformance, addedTypesReplaceThoseOfTheFirstItemOnly) {
    theirs->clearContents();
    ASSERT_TRUE(theirs->writeItems(Items{textItem("first"), textItem("second")}));
    EXPECT_TRUE(ours->addTypes(std::vector{representation(pasteboardType::string, "replaced")}));
    EXPECT_EQ(textOf(*theirs), "replaced\nsecond");
    EXPECT_EQ(theirs->types(), std::vector{std::string(pasteboardType::string)});
}

TEST_P(PasteboardConformance, typesCanBeAddedToOnesOwnContent) {
    copyText(*ours, "text");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->addTypes(std::vector{representation(markerType, "marker")}));
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "text");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
}

TEST_P(PasteboardConformance, typesCanBeAddedToAContentWhoseOwnerIsGone) {
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
    const std::int64_t cleared = theirs->clearContents();
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
    EXPECT_EQ(theirs->types(), std::vector{std::string(pasteboardType::string)});
    EXPECT_TRUE(theirs->setString("more", someType)) << "it is still theirs";
}

TEST_P(PasteboardConformance, whoeverClearedCannotWriteOnceAnotherProgramAddedTypes) {
    copyText(*theirs, "text");
    ASSERT_TRUE(ours->addTypes(std::vector{representation(markerType, "marker")}));
    EXPECT_FALSE(theirs->setString("late", pasteboardType::string));
    EXPECT_FALSE(theirs->setData(Bytes::copyOf("late"), someType));
    EXPECT_FALSE(theirs->writeItems(Items{textItem("late")}));
    EXPECT_EQ(textOf(*ours), "text");
    EXPECT_EQ(textOf(*ours, markerType), "marker");
}

TEST_P(PasteboardConformance, anUpdateReplacesTheContentAsOneChange) {
    copyText(*theirs, "before");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->update([&] {
        ours->clearContents();
        return ours->setString("after", pasteboardType::string) && ours->setString("marker", markerType);
    }));
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "after");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
    EXPECT_TRUE(ours->setString("more", someType)) << "the update's clearing took the pasteboard over";
}

TEST_P(PasteboardConformance, withinAnUpdateOnesOwnObjectSeesTheNewState) {
    copyText(*theirs, "before");
    const std::int64_t before = ours->changeCount();
    const Bytes large = patternOf(std::size_t{200} * 1024, 7);
    EXPECT_TRUE(ours->update([&] {
        EXPECT_EQ(ours->changeCount(), before);
        EXPECT_EQ(textOf(*ours), "before");
        EXPECT_EQ(ours->clearContents(), before + 1);
        EXPECT_EQ(ours->changeCount(), before + 1);
        EXPECT_TRUE(ours->types().empty());
        EXPECT_TRUE(ours->writeItems(Items{fileUrlItem("file:///tmp/new"), textItem("after")}));
        EXPECT_TRUE(ours->setData(large, someType));
        EXPECT_EQ(ours->types(), (std::vector{std::string(pasteboardType::fileUrl), std::string(someType),
                                              std::string(pasteboardType::string)}));
        EXPECT_EQ(textOf(*ours), "after");
        EXPECT_EQ(ours->filePaths(), std::vector<std::string>{"/tmp/new"});
        EXPECT_TRUE(dataOf(*ours, someType) == large.view());
        return true;
    }));
    EXPECT_TRUE(dataOf(*theirs, someType) == large.view());
}

TEST_P(PasteboardConformance, dataReadWithinAnUpdateOutlivesIt) {
    const Bytes before = patternOf(std::size_t{200} * 1024, 1);
    const Bytes after = patternOf(std::size_t{200} * 1024, 2);
    ours->clearContents();
    ASSERT_TRUE(ours->setData(before, someType));
    std::optional<Bytes> readBefore;
    std::optional<Bytes> readAfter;
    EXPECT_TRUE(ours->update([&] {
        readBefore = ours->data(someType);
        ours->clearContents();
        const bool written = ours->setData(after, someType);
        readAfter = ours->data(someType);
        return written;
    }));
    copyText(*theirs, "something else");
    ASSERT_TRUE(readBefore && readAfter);
    EXPECT_TRUE(readBefore->view() == before.view());
    EXPECT_TRUE(readAfter->view() == after.view());
}

TEST_P(PasteboardConformance, anUpdateWhoseStepsGiveFalseGivesFalseAndItsClearingHolds) {
    copyText(*theirs, "before");
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->update([&] {
        ours->clearContents();
        return false;
    }));
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_TRUE(theirs->types().empty());
    EXPECT_FALSE(theirs->setString("late", pasteboardType::string)) << "it was cleared by another program";
}

TEST_P(PasteboardConformance, anUpdateThatFailsAfterWritingLeavesNothingOfTheOldContent) {
    theirs->clearContents();
    ASSERT_TRUE(theirs->setString("before", someType));
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->update([&] {
        ours->clearContents();
        return ours->setString("after", pasteboardType::string) && ours->setString("nameless", "");
    }));
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(dataOf(*theirs, someType), std::nullopt);
}

TEST_P(PasteboardConformance, anUpdateThatDoesNothingChangesNothing) {
    copyText(*ours, "text");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->update([] { return true; }));
    EXPECT_FALSE(ours->update([] { return false; }));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(textOf(*theirs), "text");
    EXPECT_TRUE(ours->setString("more", someType)) << "it is still ours";
}

TEST_P(PasteboardConformance, anUpdateWithoutAClearingWritesToOnesOwnContentOnly) {
    copyText(*ours, "ours");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(ours->update([&] { return ours->writeItems(Items{textItem("more")}); }));
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(textOf(*theirs), "ours\nmore");

    copyText(*theirs, "theirs");
    EXPECT_FALSE(ours->update([&] { return ours->writeItems(Items{textItem("more")}); }));
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(textOf(*ours), "theirs");
}

TEST_P(PasteboardConformance, anUpdateCanAddTypes) {
    copyText(*theirs, "text");
    const std::int64_t before = ours->changeCount();
    EXPECT_TRUE(
        ours->update([&] { return ours->addTypes(std::vector{representation(markerType, "marker")}); }));
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "text");
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
}

TEST_P(PasteboardConformance, anUpdateWorksAfterOneThatFailed) {
    EXPECT_FALSE(ours->update([&] {
        ours->clearContents();
        return false;
    }));
    EXPECT_TRUE(ours->update([&] {
        ours->clearContents();
        return ours->setString("text", pasteboardType::string);
    }));
    EXPECT_EQ(textOf(*theirs), "text");
}

TEST_P(UpdateIsolationConformance, whileAnUpdateRunsOtherProgramsSeeTheContentFromBefore) {
    theirs->clearContents();
    ASSERT_TRUE(theirs->writeItems(Items{textItem("before"), fileUrlItem("file:///tmp/before")}));
    const std::int64_t before = theirs->changeCount();
    const std::vector<std::string> typesBefore = theirs->types();
    const auto expectBefore = [&](const char* when) {
        EXPECT_EQ(theirs->changeCount(), before) << when;
        EXPECT_EQ(theirs->types(), typesBefore) << when;
        EXPECT_EQ(textOf(*theirs), "before") << when;
        EXPECT_EQ(theirs->filePaths(), std::vector<std::string>{"/tmp/before"}) << when;
        EXPECT_EQ(dataOf(*theirs, someType), std::nullopt) << when;
    };
    EXPECT_TRUE(ours->update([&] {
        expectBefore("at the beginning");
        ours->clearContents();
        expectBefore("after the clearing");
        bool written = ours->setString("after", pasteboardType::string);
        expectBefore("after the first write");
        written = written && ours->setData(patternOf(std::size_t{300} * 1024, 5), someType);
        expectBefore("after a large write");
        return written;
    }));
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs), "after");
    EXPECT_TRUE(theirs->filePaths().empty());
    EXPECT_TRUE(dataOf(*theirs, someType));
}

TEST_P(UpdateIsolationConformance, addedTypesAreSeenOnlyWhenTheUpdateEnds) {
    copyText(*theirs, "text");
    const std::int64_t before = theirs->changeCount();
    EXPECT_TRUE(ours->update([&] {
        const bool added = ours->addTypes(std::vector{representation(markerType, "marker")});
        EXPECT_EQ(theirs->changeCount(), before);
        EXPECT_EQ(textOf(*theirs, markerType), std::nullopt);
        return added;
    }));
    EXPECT_EQ(theirs->changeCount(), before + 1);
    EXPECT_EQ(textOf(*theirs, markerType), "marker");
}

} // namespace tavel
