#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/WaitUntil.h"

#include <array>
#include <cstdlib>
#include <memory>

namespace tavel {

namespace {

constexpr std::size_t large = std::size_t{30} << 20;

} // namespace

TEST_P(Reader, isOneOfThreeThatAreServedByTurns) {
    const auto peers = start(longTimeOuts());
    const std::string bytes = distinctBytes(large);
    peers->write("public.png", bytes);
    std::array<std::unique_ptr<ReaderPeer>, 3> readers;
    for (auto& reader : readers) {
        reader = peers->makeReader();
        reader->ask("image/png");
    }
    std::array<std::string, 3> received;
    for (bool isOver = false; !isOver;) {
        isOver = true;
        for (std::size_t i = 0; i < readers.size(); ++i) {
            const std::string part = readers[i]->takePart();
            received[i] += part;
            isOver = isOver && part.empty();
        }
    }
    for (const std::string& one : received)
        EXPECT_TRUE(one == bytes);
}

TEST_P(Reader, isServedToTheEndWhenAnotherProgramHasTakenTheSelection) {
    const auto peers = start(longTimeOuts());
    const auto reader = peers->makeReader();
    const auto other = peers->makeOwner();
    const std::string bytes = distinctBytes(large);
    peers->write("public.png", bytes);
    reader->ask("image/png");
    const std::string beginning = reader->takePart();
    other->take();
    EXPECT_TRUE(peers->isServing());
    EXPECT_TRUE(beginning + reader->takeRest() == bytes);
    peers->settle();
    EXPECT_FALSE(peers->isServing());
}

TEST_P(Reader, isServedTheOldContentToTheEndWhenTheProgramHasANewOne) {
    const auto peers = start(longTimeOuts());
    const auto reader = peers->makeReader();
    const std::string bytes = distinctBytes(large);
    peers->write("public.png", bytes);
    reader->ask("image/png");
    peers->write("public.png", distinctBytes(large, 2));
    EXPECT_TRUE(reader->takeRest() == bytes);
}

TEST_P(Reader, whoStallsIsGivenUpWhileAnotherGoesOn) {
    auto timeOuts = longTimeOuts();
    timeOuts.requestorInactivity = std::chrono::seconds(1);
    const auto peers = start(timeOuts);
    const auto stalled = peers->makeReader();
    const auto busy = peers->makeReader();
    const auto other = peers->makeOwner();
    const std::string bytes = distinctBytes(large);
    peers->write("public.png", bytes);
    stalled->ask("image/png");
    EXPECT_FALSE(stalled->takePart().empty());
    EXPECT_TRUE(busy->read("image/png") == bytes);
    // Without the selection, the program serves only the stalled transfer.
    other->take();
    waitUntil([&] { return !peers->isServing(); }, atOnce);
    EXPECT_TRUE(stalled->isGivenUp());
    // A new request is answered.
    peers->write("public.png", "small");
    EXPECT_EQ(stalled->read("image/png"), "small");
}

TEST_P(Reader, whoNeverBeginsIsGivenUp) {
    auto timeOuts = longTimeOuts();
    timeOuts.requestorInactivity = std::chrono::milliseconds(200);
    const auto peers = start(timeOuts);
    const auto stalled = peers->makeReader();
    const auto other = peers->makeOwner();
    peers->write("public.png", distinctBytes(large));
    stalled->ask("image/png");
    other->take();
    waitUntil([&] { return !peers->isServing(); }, atOnce);
}

// The memory of these pictures is never touched, so they take none.
TEST_P(Reader, ofAFormerContentIsGivenUpWhenAllTogetherTakeTooMuchMemory) {
    const auto peers = start(longTimeOuts());
    const auto copyPicture = [&](std::size_t size) {
        const std::shared_ptr<char> memory(static_cast<char*>(std::calloc(size, 1)), std::free);
        const PasteboardItem item{{"public.png", Bytes(memory, memory.get(), size)}};
        ASSERT_TRUE(peers->board().replaceWithItems({&item, 1}));
    };
    constexpr std::size_t half = std::size_t{128} << 20;
    const auto first = peers->makeReader();
    const auto second = peers->makeReader();
    const auto third = peers->makeReader();
    copyPicture(half);
    first->ask("image/png");
    copyPicture(half);
    second->ask("image/png");
    third->ask("image/png"); // which shares the memory of the second
    for (ReaderPeer* const one : {first.get(), second.get(), third.get()})
        EXPECT_FALSE(one->isGivenUp()) << "as all together are at the limit";
    copyPicture(large);
    const auto fourth = peers->makeReader();
    fourth->ask("image/png");
    EXPECT_TRUE(first->isGivenUp()) << "as the oldest, and the one that has stood still the longest";
    EXPECT_FALSE(second->isGivenUp());
    EXPECT_FALSE(third->isGivenUp());
    EXPECT_FALSE(fourth->isGivenUp());
}

} // namespace tavel
