#include "Tests/Selections/Checks.h"

#include "Tests/Selections/Reading.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Support/WaitUntil.h"

#include <gmock/gmock.h>

#include <memory>

namespace tavel {

std::optional<std::int64_t> addType(SelectionPeers& peers) {
    const Representation one{addedType, Bytes::copyOf("added")};
    return peers.board().addTypes({&one, 1});
}

std::optional<std::int64_t> gatherAndAddType(SelectionPeers& peers,
                                             const std::vector<std::string>& required) {
    awaitNoticed(peers.board(), 1);
    bool isOver = false;
    std::optional<std::int64_t> result;
    std::unique_ptr<Gathering> gathering;
    peers.program().run([&] {
        gathering = peers.board().gatherForAddTypes(required, [&](bool isCurrent) {
            EXPECT_TRUE(isCurrent);
            result = addType(peers);
            isOver = true;
        });
    });
    waitUntil(
        [&] {
            bool isOverNow = false;
            peers.program().run([&] { isOverNow = isOver; });
            return isOverNow;
        },
        atOnce);
    peers.program().run([&] { gathering.reset(); });
    return result;
}

void expectNothing(SelectionPeers& peers, std::int64_t count) {
    using testing::IsEmpty;
    Pasteboard& board = peers.board();
    EXPECT_THAT(board.types(), IsEmpty());
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.data("public.png"), std::nullopt);
    EXPECT_THAT(board.files(everyFile).paths, IsEmpty());
    EXPECT_EQ(board.changeCount(), count);
    const PasteboardValue value{"public.utf8-plain-text", PasteboardValue::Form::text, Bytes::copyOf("text")};
    EXPECT_FALSE(board.replaceWithValues({&value, 1}));
    const PasteboardItem item{{"public.png", Bytes::copyOf("x")}};
    EXPECT_FALSE(board.replaceWithItems({&item, 1}));
    EXPECT_FALSE(board.replaceWithItems({}));
    EXPECT_FALSE(board.addTypes(item));
    EXPECT_EQ(board.noticedChangeCount(), count);
    EXPECT_FALSE(peers.isServing());
    EXPECT_THAT(peers.program().open(otherSelection)->types(), IsEmpty());
}

} // namespace tavel
