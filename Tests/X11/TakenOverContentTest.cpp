#include "Tests/X11/Reading.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <memory>

namespace tavel {

namespace {

using testing::ElementsAre;

constexpr auto added = "net.example.added";

/// Another program's content, to which the tested program adds a type.
class TakenOverContent : public testing::Test {
protected:
    /// Takes the selection for the owner; adds the type at the end of a gathering that requires these.
    std::optional<std::int64_t> addWith(X11Peers& peers, ScriptedOwner& owner,
                                        const std::vector<std::string>& required) {
        owner.take();
        awaitNoticed(peers.board(), 1);
        bool isOver = false;
        std::optional<std::int64_t> result;
        std::unique_ptr<Gathering> gathering;
        peers.program().run([&] {
            gathering = peers.board().gatherForAddTypes(required, [&](bool isCurrent) {
                EXPECT_TRUE(isCurrent);
                result = add(peers);
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

    /// To be called on the program's thread.
    static std::optional<std::int64_t> add(X11Peers& peers) {
        const Representation one{added, Bytes::copyOf("added")};
        return peers.board().addTypes({&one, 1});
    }
};

TEST_F(TakenOverContent, staysTheOwnersIfARequiredTypeIsRefused) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offer({"UTF8_STRING", "image/png"});
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
    EXPECT_EQ(addWith(peers, owner, {plainText, "public.png"}), std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
}

TEST_F(TakenOverContent, staysTheOwnersIfARequiredTypeIsNotAnswered) {
    X11Peers peers(shortOwnerTimeOut());
    ScriptedOwner owner(peers.display());
    owner.offer({"image/png", "UTF8_STRING"});
    owner.on("image/png", owner.value("image/png", "picture"));
    owner.on("UTF8_STRING", owner.silence());
    EXPECT_EQ(addWith(peers, owner, {"public.png", plainText}), std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
}

TEST_F(TakenOverContent, staysTheOwnersIfARequiredTypeIsTooLarge) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    const std::string part(std::size_t{8} << 20, 'x');
    owner.offer({"UTF8_STRING", "image/png"});
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
    owner.on("image/png", owner.increments("image/png", std::vector<std::string>(17, part)));
    EXPECT_EQ(addWith(peers, owner, {plainText, "public.png"}), std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
}

// The owner's private types stand before and behind the required one in its list.
TEST_F(TakenOverContent, losesThePrivateTypesThatDoNotComeInTimeAlone) {
    auto timeOuts = longTimeOuts();
    timeOuts.privateTypes = std::chrono::seconds(1);
    X11Peers peers(timeOuts);
    ScriptedOwner owner(peers.display());
    owner.offer({"net.example.first", "net.example.silent", "UTF8_STRING", "net.example.last"});
    owner.on("net.example.first", owner.value("net.example.first", "1"));
    owner.on("net.example.silent", owner.silence());
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
    owner.on("net.example.last", owner.value("net.example.last", "never asked for"));
    // A type that is required is none of the owner's duties if it is not offered.
    EXPECT_EQ(addWith(peers, owner, {plainText, "public.html"}), 2);
    EXPECT_THAT(peers.board().types(), testing::UnorderedElementsAre("net.example.first", plainText, added));
    EXPECT_EQ(peers.text(), "text");
    EXPECT_EQ(owner.countOf("net.example.last"), 0U);
    EXPECT_EQ(owner.requests().at(1).targetName, "UTF8_STRING") << "behind the targets";
}

TEST_F(TakenOverContent, hasToBeGatheredForThat) {
    X11Peers peers(longTimeOuts());
    ScriptedOwner owner(peers.display());
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    awaitNoticed(peers.board(), 1);
    peers.program().run([&] { EXPECT_EQ(add(peers), std::nullopt); });
    std::optional<std::int64_t> result = 0;
    std::unique_ptr<Gathering> gathering;
    peers.program().run([&] {
        gathering = peers.board().gather({{plainText, ample}}, [&](bool) { result = add(peers); });
    });
    Reading afterwards(peers, {plainText});
    EXPECT_TRUE(afterwards.isCurrent());
    EXPECT_EQ(result, std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
    peers.program().run([&] { gathering.reset(); });
}

TEST_F(TakenOverContent, isNotNeededToAddToTheProgramsOwn) {
    X11Peers peers(longTimeOuts());
    peers.write(plainText, "own");
    peers.program().run([&] { EXPECT_EQ(add(peers), 2); });
    EXPECT_THAT(peers.board().types(), ElementsAre(plainText, added));
}

} // namespace

} // namespace tavel
