#include "Tests/Selections/Reading.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>
#include <xcb/xcb.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::Optional;

constexpr auto html = "public.html";

/// The tested program gathers what an owner has. No time-out ends anything.
class Gathered : public testing::Test {
protected:
    /// Takes the selection, and returns when the program knows the targets.
    void takeAndAwait(ScriptedOwner& one) {
        one.take();
        awaitNoticed(peers.board(), peers.board().changeCount());
    }

    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
};

TEST_F(Gathered, valuesAreThoseThatTheOwnerOffersAndDelivers) {
    owner.offer({"UTF8_STRING", "text/html"});
    owner.on("UTF8_STRING", owner.value("UTF8_STRING", "text"));
    takeAndAwait(owner); // refuses its HTML
    Reading reading(peers, {html, "public.png", plainText});
    EXPECT_THAT(reading.values(), ElementsAre(std::nullopt, std::nullopt, Optional(std::string("text"))));
    EXPECT_EQ(owner.countOf("image/png"), 0U);
}

TEST_F(Gathered, contentsAreNotReadForAnybodyWhileTheirTypesAreUnknown) {
    owner.offerValue("UTF8_STRING", "old");
    takeAndAwait(owner);
    owner.on("TARGETS", owner.silence());
    owner.take();
    static_cast<void>(owner.awaitRequest("TARGETS", 2));
    Reading reading(peers, {plainText});
    EXPECT_FALSE(reading.isCurrent());
    EXPECT_EQ(owner.countOf("UTF8_STRING"), 0U);
}

// The two values come in one pass. The caller that is told first has the other content replaced.
TEST_F(Gathered, contentsThatAreReplacedAfterTheValueHasComeAreNotCurrent) {
    ScriptedOwner first(peers.display());
    const auto firstBoard = peers.program().open("PRIMARY");
    for (ScriptedOwner* const one : {&first, &owner}) {
        one->offer({"UTF8_STRING"});
        one->on("UTF8_STRING", one->silence());
    }
    xcb_set_selection_owner(first.connection(), first.window(), XCB_ATOM_PRIMARY, XCB_CURRENT_TIME);
    first.atom("ROUND_TRIP");
    awaitNoticed(*firstBoard, firstBoard->changeCount());
    takeAndAwait(owner);

    std::unique_ptr<Gathering> gathering;
    std::unique_ptr<Reading> reading;
    bool isReplaced = false;
    peers.program().run([&] {
        gathering = firstBoard->gather({{plainText, ample}}, [&](bool) {
            isReplaced = !reading->isOver();
            owner.take();
            static_cast<void>(peers.board().changeCount());
        });
        reading = std::make_unique<Reading>(peers, std::vector<std::string>{plainText});
    });
    const auto firstRequest = first.awaitRequest("UTF8_STRING");
    const auto request = owner.awaitRequest("UTF8_STRING");
    peers.program().run([&] {
        first.value("UTF8_STRING", "first")(firstRequest);
        first.atom("ROUND_TRIP");
        owner.value("UTF8_STRING", "old")(request);
        owner.atom("ROUND_TRIP");
        peers.program().selections().synchronize();
    });
    EXPECT_FALSE(reading->isCurrent());
    EXPECT_TRUE(isReplaced) << "before the other caller was told";
}

// A part a pass: what else the program has to do comes in between.
TEST_F(Gathered, propertyOf40MebibytesIsReadInSeveralPasses) {
    constexpr std::size_t piece = std::size_t{10} << 20;
    constexpr int pieces = 4;
    owner.offer({"image/png"});
    owner.on("image/png", owner.silence());
    takeAndAwait(owner);
    std::size_t size = 0;
    int passes = 0;
    peers.program().run([&] { // the program's own loop stands still
        X11Selections& selections = peers.program().selections();
        const auto gathering = peers.board().gather({{"public.png", ample}}, [&](bool) {
            size = peers.board().data("public.png", ample).value_or(Bytes()).size();
        });
        selections.dispatch();
        const auto request = owner.awaitRequest("image/png");
        const std::string bytes(piece, 'x');
        for (int i = 0; i < pieces; ++i)
            xcb_change_property(owner.connection(), XCB_PROP_MODE_APPEND, request.requestor, request.property,
                                request.target, 8, piece, bytes.data());
        owner.notify(request);
        owner.atom("ROUND_TRIP");
        selections.synchronize();
        for (; selections.hasWork(); ++passes)
            selections.dispatch();
    });
    EXPECT_EQ(size, pieces * piece);
    EXPECT_GE(passes, pieces);
}

} // namespace

} // namespace tavel
