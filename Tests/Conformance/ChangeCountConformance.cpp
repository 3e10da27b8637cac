#include "Platform/PasteboardTypes.h"
#include "Tests/Conformance/PasteboardConformance.h"
#include "Tests/Support/ReadingLimits.h"

#include <array>
#include <functional>
#include <random>

namespace tavel {

using namespace std::string_literals;

TEST_P(PasteboardConformance, aFreshPasteboardIsEmpty) {
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_TRUE(pasteboard->types().empty());
        EXPECT_EQ(textOf(*pasteboard), std::nullopt);
        EXPECT_EQ(dataOf(*pasteboard, someType), std::nullopt);
        EXPECT_TRUE(pasteboard->files(everyFile).paths.empty());
    }
}

TEST_P(PasteboardConformance, clearingMovesTheChangeCountByOne) {
    const std::int64_t before = ours->changeCount();
    EXPECT_EQ(ours->replaceWithItems({}), before + 1);
    EXPECT_EQ(ours->changeCount(), before + 1);
    EXPECT_EQ(ours->replaceWithItems({}), before + 2);
    EXPECT_EQ(ours->changeCount(), before + 2);
}

TEST_P(PasteboardConformance, clearingRemovesTheContent) {
    copyText(*ours, "to be removed");
    ASSERT_FALSE(theirs->types().empty());
    clear(*ours);
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_TRUE(pasteboard->types().empty());
        EXPECT_EQ(textOf(*pasteboard), std::nullopt);
    }
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
    for (Pasteboard* const pasteboard : {ours.get(), theirs.get()}) {
        EXPECT_FALSE(pasteboard->types().empty());
        EXPECT_TRUE(pasteboard->string(pasteboardType::string, ample));
        EXPECT_TRUE(pasteboard->data(pasteboardType::string, ample));
        EXPECT_TRUE(pasteboard->files(everyFile).paths.empty());
    }
    EXPECT_EQ(ours->changeCount(), before);
    EXPECT_EQ(theirs->changeCount(), before);
}

TEST_P(PasteboardConformance, theChangeCountMovesByWholeContentsAndNeverBack) {
    // How far each operation moves the count; adding types to an empty pasteboard moves nothing.
    struct Operation {
        std::function<void(Pasteboard&)> run;
        std::int64_t nearest;
        std::int64_t furthest;
    };
    const std::array<Operation, 5> operations{{
        {[](Pasteboard& board) { board.replaceWithItems({}); }, 1, 1},
        {[](Pasteboard& board) { copyText(board, "text"); }, 1, 1},
        {[](Pasteboard& board) { copyItems(board, Items{textItem("item")}); }, 1, 1},
        {[](Pasteboard& board) { board.replaceWithItems(Items{{representation("", "refused")}}); }, 1, 1},
        {[](Pasteboard& board) { board.addTypes(std::vector{representation(otherType, "added")}); }, 0, 1},
    }};
    std::minstd_rand random(20240229);
    std::int64_t last = ours->changeCount();
    for (int step = 0; step < 200; ++step) {
        const Operation& operation = operations.at(random() % operations.size());
        operation.run(random() % 2 == 0 ? *ours : *theirs);
        const std::int64_t count = ours->changeCount();
        ASSERT_GE(count, last + operation.nearest);
        ASSERT_LE(count, last + operation.furthest);
        ASSERT_EQ(theirs->changeCount(), count);
        last = count;
    }
}

TEST_P(PasteboardConformance, aSecondObjectOfTheSameProgramIsTheSamePasteboard) {
    copyText(*ours, "text");
    const auto second = backend->open(name);
    EXPECT_EQ(second->changeCount(), ours->changeCount());
    EXPECT_EQ(textOf(*second), "text");
    copyText(*second, "other");
    EXPECT_EQ(textOf(*ours), "other");
    EXPECT_EQ(second->changeCount(), ours->changeCount());
}

} // namespace tavel
