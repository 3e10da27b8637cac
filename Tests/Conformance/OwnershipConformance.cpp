#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"

#include <array>
#include <functional>
#include <random>

namespace tavel {

using namespace std::string_literals;

TEST_P(PasteboardConformance, aFreshPasteboardIsEmpty) {
    static constexpr std::array<std::string_view, 2> wanted{pasteboardType::string, someType};
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_TRUE(pasteboard->types().empty());
        EXPECT_EQ(pasteboard->availableType(wanted), std::nullopt);
        EXPECT_EQ(textOf(*pasteboard), std::nullopt);
        EXPECT_EQ(dataOf(*pasteboard, someType), std::nullopt);
        EXPECT_TRUE(pasteboard->filePaths().empty());
    }
}

TEST_P(PasteboardConformance, clearingMovesTheChangeCountByOne) {
    const std::int64_t before = ours->changeCount();
    EXPECT_EQ(ours->clearContents(), before + 1);
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(ours->clearContents(), before + 2);
    EXPECT_EQ(ours->changeCount(), before + 2);
}

TEST_P(PasteboardConformance, clearingRemovesTheContent) {
    copyText(*ours, "to be removed");
    ASSERT_FALSE(theirs->types().empty());
    ours->clearContents();
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_TRUE(pasteboard->types().empty());
        EXPECT_EQ(textOf(*pasteboard), std::nullopt);
    }
}

TEST_P(PasteboardConformance, writingAfterOnesOwnClearDoesNotMoveTheChangeCount) {
    const std::int64_t cleared = ours->clearContents();
    ASSERT_TRUE(ours->setString("text", pasteboardType::string));
    ASSERT_TRUE(ours->setData(Bytes::copyOf("data"), someType));
    ASSERT_TRUE(ours->writeItems(Items{textItem("more")}));
    EXPECT_EQ(ours->changeCount(), cleared);
    EXPECT_EQ(theirs->changeCount(), cleared);
}

TEST_P(PasteboardConformance, anotherProgramsCopyMovesTheChangeCountByOne) {
    copyText(*ours, "ours");
    const std::int64_t before = ours->changeCount();
    copyText(*theirs, "theirs");
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(textOf(*ours), "theirs");
}

TEST_P(PasteboardConformance, programsThatTakeTurnsSeeTheSameChangeCountAndContent) {
    std::int64_t count = ours->changeCount();
    for (int round = 0; round < 10; ++round) {
        Pasteboard& writer = round % 2 == 0 ? *ours : *theirs;
        copyText(writer, "round " + std::to_string(round));
        ++count;
        for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
            EXPECT_EQ(pasteboard->changeCount(), count);
            EXPECT_EQ(textOf(*pasteboard), "round " + std::to_string(round));
        }
    }
}

TEST_P(PasteboardConformance, readingDoesNotMoveTheChangeCount) {
    copyText(*ours, "text");
    const std::int64_t before = ours->changeCount();
    static constexpr std::array<std::string_view, 1> wanted{pasteboardType::string};
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_FALSE(pasteboard->types().empty());
        EXPECT_TRUE(pasteboard->availableType(wanted));
        EXPECT_TRUE(pasteboard->string(pasteboardType::string));
        EXPECT_TRUE(pasteboard->data(pasteboardType::string));
        EXPECT_TRUE(pasteboard->filePaths().empty());
    }
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(theirs->changeCount(), before);
}

TEST_P(PasteboardConformance, theChangeCountMovesByWholeContentsAndNeverBack) {
    // What each operation may do to the count, in an order that no one has thought of.
    struct Operation {
        std::function<void(Pasteboard&)> run;
        std::int64_t furthest;
    };
    const std::array<Operation, 6> operations{{
        {[](Pasteboard& board) { board.clearContents(); }, 1},
        {[](Pasteboard& board) { board.setString("text", pasteboardType::string); }, 0},
        {[](Pasteboard& board) { board.setData(Bytes::copyOf("data"), someType); }, 0},
        {[](Pasteboard& board) { board.writeItems(Items{textItem("item")}); }, 0},
        {[](Pasteboard& board) { board.addTypes(std::vector{representation(otherType, "added")}); }, 1},
        {[](Pasteboard& board) {
             board.update([&] {
                 board.clearContents();
                 return board.setString("update", pasteboardType::string);
             });
         },
         1},
    }};
    std::minstd_rand random(20240229);
    std::int64_t last = ours->changeCount();
    for (int step = 0; step < 200; ++step) {
        const Operation& operation = operations.at(random() % operations.size());
        operation.run(random() % 2 == 0 ? *ours : *theirs);
        const std::int64_t count = ours->changeCount();
        ASSERT_GE(count, last);
        ASSERT_LE(count, last + operation.furthest);
        ASSERT_EQ(theirs->changeCount(), count);
        last = count;
    }
}

TEST_P(PasteboardConformance, writingIsRefusedBeforeOneHasCleared) {
    EXPECT_FALSE(ours->setString("text", pasteboardType::string));
    EXPECT_FALSE(ours->setData(Bytes::copyOf("data"), someType));
    EXPECT_FALSE(ours->writeItems(Items{textItem("item")}));
    EXPECT_TRUE(ours->types().empty());
    EXPECT_TRUE(theirs->types().empty());
}

TEST_P(PasteboardConformance, writingToAnotherProgramsContentIsRefused) {
    copyText(*theirs, "theirs");
    const std::int64_t before = ours->changeCount();
    EXPECT_FALSE(ours->setString("ours", pasteboardType::string));
    EXPECT_FALSE(ours->setData(Bytes::copyOf("data"), someType));
    EXPECT_FALSE(ours->writeItems(Items{textItem("item")}));
    EXPECT_EQ(ours->types(), std::vector{std::string(pasteboardType::string)});
    EXPECT_EQ(textOf(*theirs), "theirs");
    EXPECT_EQ(ours->changeCount(), before);
}

TEST_P(PasteboardConformance, writingIsRefusedOnceAnotherProgramHasCleared) {
    copyText(*ours, "ours");
    theirs->clearContents();
    EXPECT_FALSE(ours->setString("more", pasteboardType::string));
    EXPECT_FALSE(ours->setData(Bytes::copyOf("data"), someType));
    EXPECT_FALSE(ours->writeItems(Items{textItem("item")}));
    EXPECT_TRUE(theirs->types().empty());
    EXPECT_TRUE(theirs->setString("theirs", pasteboardType::string));
    EXPECT_EQ(textOf(*ours), "theirs");
}

TEST_P(PasteboardConformance, clearingTakesThePasteboardBack) {
    copyText(*ours, "first");
    copyText(*theirs, "second");
    copyText(*ours, "third");
    EXPECT_EQ(textOf(*theirs), "third");
    EXPECT_FALSE(theirs->setString("fourth", pasteboardType::string));
    EXPECT_EQ(textOf(*ours), "third");
}

TEST_P(PasteboardConformance, aSecondObjectOfTheSameProgramReadsTheContentButMayNotWriteToIt) {
    copyText(*ours, "text");
    const auto second = backend->open(name);
    EXPECT_EQ(second->changeCount(), ours->changeCount());
    EXPECT_EQ(textOf(*second), "text");
    EXPECT_FALSE(second->setString("other", pasteboardType::string));
    EXPECT_TRUE(ours->setString("more", someType));
    EXPECT_EQ(textOf(*second, someType), "more");
    EXPECT_EQ(textOf(*second), "text");
}

} // namespace tavel
