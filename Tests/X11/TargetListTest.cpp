#include "Platform/PasteboardTypes.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <functional>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TargetList : public testing::Test {
protected:
    void take() {
        owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
        owner.take();
    }

    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
};

TEST_F(TargetList, isAskedForOncePerContent) {
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "text");
    EXPECT_EQ(peers.data("public.png"), std::nullopt);
    EXPECT_EQ(owner.countOf("TARGETS"), 1U);
    owner.offerValue("image/png", "picture");
    owner.take();
    for (int i = 0; i < 5; ++i)
        EXPECT_THAT(peers.board().types(), ElementsAre("public.png"));
    EXPECT_EQ(owner.countOf("TARGETS"), 2U);
}

TEST_F(TargetList, isAskedForOnceByAllPasteboardsOfAProgram) {
    const auto second = peers.program().open(std::nullopt);
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_THAT(second->types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(owner.countOf("TARGETS"), 1U);
}

TEST_F(TargetList, andEverythingElseIsAskedForAtATimeInTheOwnersTime) {
    owner.offerValue("UTF8_STRING", "text");
    for (int i = 0; i < 3; ++i) {
        owner.take();
        EXPECT_EQ(peers.text(), "text");
    }
    EXPECT_EQ(owner.requests().size(), 6U);
    owner.take();
    EXPECT_EQ(peers.text(), "text");
    for (const auto& request : owner.requests())
        EXPECT_NE(request.time, xcb_timestamp_t{XCB_CURRENT_TIME});
    EXPECT_GE(owner.awaitRequest("TARGETS", 4).time, owner.ownedSince());
    EXPECT_GE(owner.awaitRequest("UTF8_STRING", 4).time, owner.ownedSince());
}

TEST_F(TargetList, ofAnOwnerFromBeforeTheProgramIsAskedForAtATimeInTheOwnersTime) {
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    X11Program late(peers.display(), longTimeOuts());
    EXPECT_THAT(late.open(std::nullopt)->types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_NE(owner.awaitRequest("TARGETS").time, xcb_timestamp_t{XCB_CURRENT_TIME});
    EXPECT_GE(owner.awaitRequest("TARGETS").time, owner.ownedSince());
}

TEST_F(TargetList, inFormat8IsNone) {
    owner.on("TARGETS", owner.value("ATOM", "UTF8_STRING", 8));
    take();
    EXPECT_THAT(peers.board().types(), IsEmpty());
    EXPECT_EQ(peers.text(), std::nullopt);
}

TEST_F(TargetList, inFormat16IsNone) {
    owner.on("TARGETS", owner.value("ATOM", std::string(64, '\1'), 16));
    take();
    EXPECT_THAT(peers.board().types(), IsEmpty());
}

TEST_F(TargetList, ofTypeTargetsIsOne) {
    owner.on("TARGETS", owner.atoms("TARGETS", {owner.atom("UTF8_STRING")}));
    take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "text");
}

TEST_F(TargetList, withoutAnyTargetIsEmpty) {
    owner.on("TARGETS", owner.atoms("ATOM", {}));
    take();
    EXPECT_THAT(peers.board().types(), IsEmpty());
    EXPECT_EQ(peers.text(), std::nullopt);
}

TEST_F(TargetList, losesOnlyTheAtomsThatAreNone) {
    owner.on("TARGETS", owner.atoms("ATOM", {0xFFFFFFFF, owner.atom("UTF8_STRING"), 0x12345678, XCB_ATOM_NONE,
                                             owner.atom("image/png"), 0x80000000}));
    take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text", "public.png"));
    EXPECT_EQ(peers.text(), "text");
}

TEST_F(TargetList, withTheSameTargetsAgainHasEachOnce) {
    const xcb_atom_t text = owner.atom("UTF8_STRING");
    const xcb_atom_t picture = owner.atom("image/png");
    owner.on("TARGETS", owner.atoms("ATOM", {text, picture, text, text, picture, owner.atom("STRING")}));
    take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text", "public.png"));
}

TEST_F(TargetList, of100000TargetsIsReadAsFarAsTypesAreTaken) {
    std::vector<xcb_atom_t> targets(1'015, owner.atom("UTF8_STRING"));
    targets.push_back(owner.atom("image/png"));
    targets.resize(100'000, owner.atom("text/html"));
    owner.on("TARGETS", owner.atoms("ATOM", targets));
    take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text", "public.png"));
    EXPECT_EQ(peers.text(), "text");
}

TEST_F(TargetList, losesTheTargetPastTheMostThatAreTaken) {
    const auto names = [](std::size_t count) {
        std::vector<std::string> all;
        for (std::size_t i = 0; i < count; ++i)
            all.push_back("application/x-target-" + std::to_string(i));
        return all;
    };
    for (const std::size_t count : {pasteboardType::mostTypes, pasteboardType::mostTypes + 1}) {
        owner.offer(names(count));
        owner.take();
        EXPECT_EQ(peers.board().types(), names(pasteboardType::mostTypes));
    }
}

TEST_F(TargetList, losesATargetWithALongerNameThanTypesHave) {
    const std::string longest(pasteboardType::longestNameBytes, 'l');
    owner.offer({longest + "l", std::string(65'535, 'l'), longest});
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre(longest));
}

// Counts requests by their sequence numbers.
TEST_F(TargetList, andValuesOfTheProgramsOwnContentAreAskedOfNobody) {
    peers.write("public.utf8-plain-text", "own");
    peers.program().run([this] {
        xcb_connection_t* const connection = peers.program().selections().connection().get();
        const auto requestsOf = [connection](const std::function<void()>& operation) {
            const unsigned int before = xcb_no_operation(connection).sequence;
            operation();
            return xcb_no_operation(connection).sequence - before - 1;
        };
        EXPECT_EQ(requestsOf([this] { EXPECT_EQ(peers.text(), "own"); }), 0U);
        EXPECT_EQ(requestsOf([this] { EXPECT_FALSE(peers.board().types().empty()); }), 0U);
        EXPECT_EQ(requestsOf([this] { EXPECT_TRUE(peers.data("public.utf8-plain-text")); }), 0U);
        EXPECT_EQ(requestsOf([this] { EXPECT_TRUE(peers.board().files(everyFile).paths.empty()); }), 0U);
    });
}

} // namespace

} // namespace tavel
