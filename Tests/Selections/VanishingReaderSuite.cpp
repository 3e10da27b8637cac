#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/WaitUntil.h"

namespace tavel {

/// The program owns a large picture and a short text. TearDown checks that the program still works.
void VanishingReader::SetUp() {
    const PasteboardItem item{{"public.png", Bytes::copyOf(picture)},
                              {"public.utf8-plain-text", Bytes::copyOf("text")}};
    ASSERT_TRUE(peers.board().replaceWithItems({&item, 1}));
}

void VanishingReader::TearDown() {
    EXPECT_TRUE(peers.makeReader()->read("image/png") == picture);
    owner.offer({"UTF8_STRING"});
    owner.giveParts("UTF8_STRING", {"other ", "text"});
    owner.take();
    EXPECT_EQ(peers.text(), "other text");
    EXPECT_FALSE(peers.isServing());
}

/// The transfers must be gone when another program takes the selection.
void VanishingReader::expectNothingLeft() {
    owner.take();
    waitUntil([this] { return !peers.isServing(); }, atOnce);
    SetUp();
}

TEST_P(VanishingReader, whoExitsBeforeTheAnswerIsForgotten) {
    const auto reader = peers.makeReader();
    peers.program().run([&] {
        // The program's thread is busy here, so it answers only afterwards.
        reader->askOnly("image/png");
        reader->disconnect();
    });
    expectNothingLeft();
}

TEST_P(VanishingReader, whoExitsHalfWayIsForgotten) {
    const auto reader = peers.makeReader();
    reader->ask("image/png");
    EXPECT_FALSE(reader->takePart().empty());
    reader->disconnect();
    expectNothingLeft();
}

TEST_P(VanishingReader, doesNotTakeAnotherAlong) {
    const auto reader = peers.makeReader();
    const auto another = peers.makeReader();
    reader->ask("image/png");
    EXPECT_FALSE(reader->takePart().empty());
    another->ask("image/png");
    reader->disconnect();
    EXPECT_TRUE(another->takeRest() == picture);
}

} // namespace tavel
