#include "Tests/Support/WaitUntil.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>
#include <xcb/xfixes.h>

#include <cstring>

namespace tavel {

namespace {

constexpr std::size_t large = std::size_t{30} << 20;

/// The program owns a large picture and a short text. TearDown checks that the program still works.
class HostileRequestor : public testing::Test {
protected:
    void SetUp() override {
        const PasteboardItem item{{"public.png", Bytes::copyOf(picture)},
                                  {"public.utf8-plain-text", Bytes::copyOf("text")}};
        ASSERT_TRUE(peers.board().replaceWithItems({&item, 1}));
    }

    void TearDown() override {
        EXPECT_EQ(requestor.errorCount(), 0);
        ScriptedRequestor good(peers.display());
        const auto value = good.read("image/png");
        EXPECT_TRUE(value && value->bytes == picture);
        // The program's window still gets its events: it can read increments and take the selection.
        ScriptedOwner owner(peers.display());
        owner.offer({"UTF8_STRING"});
        owner.on("UTF8_STRING", owner.increments("UTF8_STRING", {"other ", "text"}));
        owner.take();
        EXPECT_EQ(peers.text(), "other text");
        EXPECT_FALSE(peers.isServing());
        const auto count = peers.board().changeCount();
        EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.board().replaceWithItems({}), count + 1); }),
                  std::chrono::seconds(4)); // below the time-out for the server's time
    }

    void begin() {
        ASSERT_TRUE(requestor.convert("image/png"));
        ASSERT_EQ(requestor.takeProperty().type, "INCR");
        ASSERT_TRUE(requestor.awaitProperty());
    }

    const std::string picture = distinctBytes(large);
    X11Peers peers{longTimeOuts()};
    ScriptedRequestor requestor{peers.display()};
};

/// A requestor whose transfers must be gone when another program takes the selection.
class VanishingRequestor : public HostileRequestor {
protected:
    void expectNothingLeft() {
        other.take();
        waitUntil([&] { return !peers.isServing(); }, atOnce);
        SetUp();
    }

    // Connected from the start: a later connection could get the identifier of a destroyed window.
    ScriptedOwner other{peers.display()};
};

TEST_F(VanishingRequestor, getsNoMoreTransfersThanGoOnAtATime) {
    constexpr int mostTransfers = 64;
    for (int i = 0; i < mostTransfers; ++i)
        EXPECT_TRUE(requestor.convert("image/png", "PICTURE" + std::to_string(i))) << i;
    EXPECT_FALSE(requestor.convert("image/png", "ONE_MORE"));
    ScriptedRequestor another(peers.display());
    EXPECT_TRUE(another.convert("image/png")) << "which another program holds open";
    another.destroyWindow();
    EXPECT_TRUE(requestor.convert("image/png", "PICTURE0")) << "which ends the one that was there";
    EXPECT_TRUE(requestor.convert("UTF8_STRING", "TEXT")) << "which is no transfer";
    requestor.destroyWindow();
    expectNothingLeft();
}

TEST_F(VanishingRequestor, whoseWindowGoesBeforeTheAnswerIsForgotten) {
    peers.program().run([&] {
        // The program's thread is busy here, so it answers only after the window is destroyed.
        requestor.ask("image/png");
        requestor.ask("UTF8_STRING");
        requestor.ask("TARGETS");
        requestor.ask("MULTIPLE");
        requestor.destroyWindow();
    });
    expectNothingLeft();
}

TEST_F(VanishingRequestor, whoseWindowGoesAfterTheAnnouncementIsForgotten) {
    ASSERT_TRUE(requestor.convert("image/png"));
    requestor.destroyWindow();
    expectNothingLeft();
}

TEST_F(VanishingRequestor, whoseWindowGoesHalfWayIsForgotten) {
    begin();
    requestor.destroyWindow();
    expectNothingLeft();
}

// The second deletion may already remove the first increment.
TEST_F(HostileRequestor, whoDeletesTheAnnouncementTwiceLosesOneIncrementAtTheMost) {
    ASSERT_TRUE(requestor.convert("image/png"));
    requestor.deleteProperty();
    requestor.deleteProperty();
    const auto value = requestor.readIncrements();
    ASSERT_TRUE(value);
    EXPECT_TRUE(picture.ends_with(value->bytes));
    EXPECT_GE(value->bytes.size(), picture.size() - (1 << 20));
}

TEST_F(HostileRequestor, whoDeletesAnIncrementUnreadLosesItAlone) {
    ASSERT_TRUE(requestor.convert("image/png"));
    requestor.deleteProperty();
    ASSERT_TRUE(requestor.awaitProperty());
    requestor.deleteProperty();
    const auto value = requestor.readIncrements();
    ASSERT_TRUE(value);
    EXPECT_LT(value->bytes.size(), picture.size());
    EXPECT_TRUE(picture.ends_with(value->bytes));
}

TEST_F(HostileRequestor, whoDeletesOtherPropertiesHasNoEffectOnTheTransfer) {
    begin();
    for (int i = 0; i < 50; ++i) {
        requestor.setBytes("OTHER", "STRING", "x");
        requestor.deleteProperty("OTHER");
    }
    const auto value = requestor.readIncrements();
    EXPECT_TRUE(value && value->bytes == picture);
}

TEST_F(HostileRequestor, whoAsksAgainIntoTheSamePropertyGetsItFromTheBeginning) {
    begin();
    requestor.takeProperty();
    ASSERT_TRUE(requestor.awaitProperty());
    ASSERT_TRUE(requestor.convert("image/png"));
    ASSERT_EQ(requestor.takeProperty().type, "INCR");
    const auto value = requestor.readIncrements();
    EXPECT_TRUE(value && value->bytes == picture);
}

TEST_F(HostileRequestor, whoAsksForLittleIntoTheSamePropertyEndsTheTransfer) {
    begin();
    ASSERT_TRUE(requestor.convert("UTF8_STRING"));
    EXPECT_EQ(requestor.takeProperty().bytes, "text");
    peers.settle();
    EXPECT_FALSE(requestor.property().exists());
}

TEST_F(HostileRequestor, whoAsksForTheTargetsIntoTheSamePropertyEndsTheTransfer) {
    begin();
    for (const char* const target : {"TARGETS", "TIMESTAMP", "SAVE_TARGETS"}) {
        ASSERT_TRUE(requestor.convert(target));
        EXPECT_NE(requestor.takeProperty().type, "image/png");
        peers.settle();
        EXPECT_FALSE(requestor.property().exists()) << target;
    }
}

TEST_F(HostileRequestor, whoAsksForTheSamePropertyTwiceInOneRequestGetsOneValue) {
    const xcb_atom_t property = requestor.atom("A");
    requestor.setAtoms("PAIRS", "ATOM_PAIR",
                       {requestor.atom("image/png"), property, requestor.atom("image/png"), property});
    ASSERT_TRUE(requestor.convert("MULTIPLE", "PAIRS"));
    ASSERT_EQ(requestor.takeProperty("A").type, "INCR");
    const auto value = requestor.readIncrements("A");
    EXPECT_TRUE(value && value->bytes == picture);
    peers.settle();
    EXPECT_FALSE(requestor.property("A").exists());
}

TEST_F(HostileRequestor, whoAsksForPropertiesThatAreNoAtomsIsToldThatTheyFailed) {
    requestor.setAtoms("PAIRS", "ATOM_PAIR",
                       {requestor.atom("image/png"), 0xFFFFFFFF, 0xFFFFFFFF, requestor.atom("A"),
                        requestor.atom("UTF8_STRING"), 0x12345678, requestor.atom("UTF8_STRING"),
                        requestor.atom("B")});
    ASSERT_TRUE(requestor.convert("MULTIPLE", "PAIRS"));
    const auto pairs = requestor.takeProperty("PAIRS").numbers();
    ASSERT_EQ(pairs.size(), 8U);
    EXPECT_EQ(pairs[1], xcb_atom_t{XCB_ATOM_NONE});
    EXPECT_EQ(pairs[3], xcb_atom_t{XCB_ATOM_NONE});
    EXPECT_EQ(pairs[5], xcb_atom_t{XCB_ATOM_NONE});
    EXPECT_EQ(pairs[7], requestor.atom("B"));
    EXPECT_EQ(requestor.takeProperty("B").bytes, "text");
}

TEST_F(HostileRequestor, whoAsksForPropertiesThatAreNoAtomsLeavesNothingToServe) {
    requestor.setAtoms("PAIRS", "ATOM_PAIR", {requestor.atom("image/png"), 0xFFFFFFFF});
    ASSERT_TRUE(requestor.convert("MULTIPLE", "PAIRS"));
    ScriptedOwner other(peers.display());
    other.take();
    EXPECT_FALSE(peers.isServing());
    SetUp();
}

// Any program can send a request that names another program's window as its requestor.
TEST_F(HostileRequestor, whoAsksInTheNameOfTheProgramsWindowDoesNotDeafenIt) {
    const xcb_window_t window = requestor.ownerOfClipboard();
    requestor.askInNameOf(window, "image/png", "A");
    peers.settle();
    xcb_delete_property(requestor.connection(), window, requestor.atom("A"));
    requestor.askInNameOf(window, "UTF8_STRING", "A"); // ends the transfer to this property
    peers.settle();
}

TEST_F(HostileRequestor, whoAsksInTheNameOfTheRootWindowIsServedOrRefused) {
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(requestor.connection())).data->root;
    requestor.askInNameOf(root, "UTF8_STRING", "A");
    requestor.askInNameOf(root, "image/png", "A");
    peers.settle();
    requestor.askInNameOf(root, "UTF8_STRING", "A");
    peers.settle();
}

TEST_F(HostileRequestor, whoAsksWithoutListeningCostsNothing) {
    for (int i = 0; i < 2000; ++i)
        requestor.askInNameOf(requestor.window(), i % 2 == 0 ? "TARGETS" : "UTF8_STRING", "A");
    peers.settle();
}

/// Events that another program has made with SendEvent.
class ForgedEvents : public HostileRequestor {
protected:
    template <typename Event>
    void send(Event event) {
        static_assert(sizeof event <= 32);
        char bytes[32] = {};
        std::memcpy(bytes, &event, sizeof event);
        xcb_send_event(requestor.connection(), 0, requestor.ownerOfClipboard(), XCB_EVENT_MASK_NO_EVENT,
                       bytes);
        requestor.atom("ROUND_TRIP");
    }
};

TEST_F(ForgedEvents, aboutTheTimeDoNotReachTheRequests) {
    ScriptedOwner owner(peers.display());
    const xcb_window_t window = requestor.ownerOfClipboard();
    owner.offerValue("UTF8_STRING", "text");
    owner.take();
    peers.settle();
    xcb_property_notify_event_t event{};
    event.response_type = XCB_PROPERTY_NOTIFY;
    event.window = window;
    event.atom = requestor.atom("TAVEL_TIME");
    event.time = owner.ownedSince() - 1000;
    event.state = XCB_PROPERTY_NEW_VALUE;
    char bytes[32] = {};
    std::memcpy(bytes, &event, sizeof event);
    xcb_send_event(requestor.connection(), 0, window, XCB_EVENT_MASK_NO_EVENT, bytes);
    requestor.atom("ROUND_TRIP");
    EXPECT_EQ(peers.text(), "text");
    EXPECT_GE(owner.awaitRequest("UTF8_STRING").time, owner.ownedSince());
    SetUp();
}

TEST_F(ForgedEvents, aboutDestructionsDoNotEndATransfer) {
    begin();
    xcb_destroy_notify_event_t event{};
    event.response_type = XCB_DESTROY_NOTIFY;
    event.event = event.window = requestor.window();
    send(event);
    peers.settle();
    const auto value = requestor.readIncrements();
    EXPECT_TRUE(value && value->bytes == picture);
}

TEST_F(ForgedEvents, aboutOwnersDoNotChangeTheCount) {
    const auto before = peers.board().changeCount();
    xcb_xfixes_selection_notify_event_t event{};
    peers.program().run(
        [&] { event.response_type = peers.program().selections().connection().selectionOwnerEvent(); });
    event.window = requestor.ownerOfClipboard();
    event.owner = requestor.window();
    event.selection = requestor.atom("CLIPBOARD");
    send(event);
    EXPECT_EQ(peers.board().changeCount(), before);
    EXPECT_EQ(peers.text(), "text");
    SetUp();
}

TEST_F(ForgedEvents, thatAnswerNothingLeaveTheProgramAsItWas) {
    for (const char* const property : {"TAVEL_SELECTION_0", "TAVEL_TIME", "NO_PROPERTY_OF_ITS"}) {
        xcb_selection_notify_event_t event{};
        event.response_type = XCB_SELECTION_NOTIFY;
        event.requestor = requestor.ownerOfClipboard();
        event.selection = requestor.atom("CLIPBOARD");
        event.target = requestor.atom("UTF8_STRING");
        event.property = requestor.atom(property);
        send(event);
    }
    EXPECT_EQ(peers.text(), "text");
}

} // namespace

} // namespace tavel
