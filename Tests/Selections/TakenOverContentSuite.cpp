#include "Tests/Selections/Checks.h"
#include "Tests/Selections/Reading.h"
#include "Tests/Selections/SelectionSuites.h"

#include <gmock/gmock.h>

namespace tavel {

using testing::ElementsAre;

TEST_P(TakenOverContent, staysTheOwnersIfARequiredTypeIsNotAnswered) {
    const auto peers = start(shortOwnerTimeOut());
    const auto owner = peers->makeOwner();
    owner->offer({"image/png", "UTF8_STRING"});
    owner->give("image/png", "picture");
    owner->beSilent("UTF8_STRING");
    owner->take();
    EXPECT_EQ(gatherAndAddType(*peers, {"public.png", plainText}), std::nullopt);
    EXPECT_EQ(peers->board().changeCount(), 1);
}

TEST_P(TakenOverContent, staysTheOwnersIfARequiredTypeIsTooLarge) {
    const auto peers = start(longTimeOuts());
    const auto owner = peers->makeOwner();
    const std::string part(std::size_t{8} << 20, 'x');
    owner->offer({"UTF8_STRING", "image/png"});
    owner->give("UTF8_STRING", "text");
    owner->giveParts("image/png", std::vector<std::string>(17, part));
    owner->take();
    EXPECT_EQ(gatherAndAddType(*peers, {plainText, "public.png"}), std::nullopt);
    EXPECT_EQ(peers->board().changeCount(), 1);
}

// The owner's private types stand before and behind the required one in its list.
TEST_P(TakenOverContent, losesThePrivateTypesThatDoNotComeInTimeAlone) {
    auto timeOuts = longTimeOuts();
    timeOuts.privateTypes = std::chrono::seconds(1);
    const auto peers = start(timeOuts);
    const auto owner = peers->makeOwner();
    owner->offer({"net.example.first", "net.example.silent", "UTF8_STRING", "net.example.last"});
    owner->give("net.example.first", "1");
    owner->beSilent("net.example.silent");
    owner->give("UTF8_STRING", "text");
    owner->give("net.example.last", "never asked for");
    // A type that is required is none of the owner's duties if it is not offered.
    owner->take();
    EXPECT_EQ(gatherAndAddType(*peers, {plainText, "public.html"}), 2);
    EXPECT_THAT(peers->board().types(),
                testing::UnorderedElementsAre("net.example.first", plainText, addedType));
    EXPECT_EQ(peers->text(), "text");
    EXPECT_EQ(owner->countOf("net.example.last"), 0U);
    EXPECT_EQ(owner->requests().front(), "UTF8_STRING");
}

TEST_P(TakenOverContent, hasToBeGatheredForThat) {
    const auto peers = start(longTimeOuts());
    const auto owner = peers->makeOwner();
    owner->offerValue("UTF8_STRING", "text");
    owner->take();
    awaitNoticed(peers->board(), 1);
    peers->program().run([&] { EXPECT_EQ(addType(*peers), std::nullopt); });
    std::optional<std::int64_t> result = 0;
    std::unique_ptr<Gathering> gathering;
    peers->program().run([&] {
        gathering = peers->board().gather({{plainText, ample}}, [&](bool) { result = addType(*peers); });
    });
    Reading afterwards(*peers, {plainText});
    EXPECT_TRUE(afterwards.isCurrent());
    EXPECT_EQ(result, std::nullopt);
    EXPECT_EQ(peers->board().changeCount(), 1);
    peers->program().run([&] { gathering.reset(); });
}

TEST_P(TakenOverContent, isNotNeededToAddToTheProgramsOwn) {
    const auto peers = start(longTimeOuts());
    peers->write(plainText, "own");
    peers->program().run([&] { EXPECT_EQ(addType(*peers), 2); });
    EXPECT_THAT(peers->board().types(), ElementsAre(plainText, addedType));
}

} // namespace tavel
