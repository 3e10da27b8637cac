#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <cstring>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

class Requestor : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(requestor.errorCount(), 0); }

    /// Expects the value in one property.
    void expectValue(const std::string& target, const std::string& type, const std::string& bytes) {
        const auto value = requestor.read(target);
        ASSERT_TRUE(value) << target;
        EXPECT_EQ(value->type, type) << target;
        EXPECT_EQ(value->format, 8) << target;
        EXPECT_EQ(value->bytes, bytes) << target;
    }

    std::vector<std::string> targets() {
        const auto value = requestor.read("TARGETS");
        EXPECT_TRUE(value);
        EXPECT_EQ(value->type, "ATOM");
        EXPECT_EQ(value->format, 32);
        return requestor.namesOf(value->numbers());
    }

    /// Requests MULTIPLE for pairs of a target and a property ("" for None). Returns the names of the
    /// properties in the answer.
    std::optional<std::vector<std::string>>
    multiple(const std::vector<std::pair<std::string, std::string>>& pairs) {
        std::vector<xcb_atom_t> atoms;
        for (const auto& [target, property] : pairs) {
            atoms.push_back(requestor.atom(target));
            atoms.push_back(property.empty() ? xcb_atom_t{XCB_ATOM_NONE} : requestor.atom(property));
        }
        requestor.setAtoms("PAIRS", "ATOM_PAIR", atoms);
        if (!requestor.convert("MULTIPLE", "PAIRS"))
            return std::nullopt;
        const auto answer = requestor.takeProperty("PAIRS");
        EXPECT_EQ(answer.type, "ATOM_PAIR");
        const auto numbers = answer.numbers();
        EXPECT_EQ(numbers.size(), atoms.size());
        std::vector<std::string> properties;
        for (std::size_t i = 0; i + 1 < numbers.size(); i += 2) {
            EXPECT_EQ(numbers[i], atoms[i]);
            properties.push_back(requestor.nameOf(numbers[i + 1]));
        }
        return properties;
    }

    X11Peers peers{longTimeOuts()};
    ScriptedRequestor requestor{peers.display()};
};

TEST_F(Requestor, findsTheTargetsOfTextAndOfTheProtocol) {
    peers.write("public.utf8-plain-text", "text");
    EXPECT_THAT(targets(), ElementsAre("TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "UTF8_STRING",
                                       "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"));
}

TEST_F(Requestor, findsTheTargetsOfAllTypesInTheirOrder) {
    const PasteboardItem item{{"com.example.own", Bytes::copyOf("{}")},
                              {"public.rtf", Bytes::copyOf("{}")},
                              {"public.file-url", Bytes::copyOf("file:///a")}};
    ASSERT_TRUE(peers.board().replaceWithItems({&item, 1}));
    EXPECT_THAT(targets(), ElementsAre("TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS", "com.example.own",
                                       "text/rtf", "application/rtf", "text/richtext", "text/uri-list",
                                       "x-special/gnome-copied-files", "x-special/mate-copied-files"));
}

TEST_F(Requestor, findsOnlyTheProtocolsTargetsOfAClearedPasteboard) {
    ASSERT_TRUE(peers.board().replaceWithItems({}));
    EXPECT_THAT(targets(), ElementsAre("TARGETS", "TIMESTAMP", "MULTIPLE", "SAVE_TARGETS"));
}

TEST_F(Requestor, getsEachTypeUnderAllItsNames) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> names{
        {"public.html", {"text/html"}},
        {"public.rtf", {"text/rtf", "application/rtf", "text/richtext"}},
        {"com.adobe.pdf", {"application/pdf"}},
        {"public.png", {"image/png"}},
        {"public.tiff", {"image/tiff"}},
        {"public.jpeg", {"image/jpeg"}},
        {"com.compuserve.gif", {"image/gif"}},
        {"public.svg-image", {"image/svg+xml"}},
        {"org.webmproject.webp", {"image/webp"}},
        {"com.example.own", {"com.example.own"}},
    };
    PasteboardItem item;
    for (const auto& [type, targets] : names)
        item.push_back({type, Bytes::copyOf("data of " + type)});
    ASSERT_TRUE(peers.board().replaceWithItems({&item, 1}));
    for (const auto& [type, targets] : names) {
        for (const std::string& target : targets)
            expectValue(target, target, "data of " + type);
    }
}

TEST_F(Requestor, getsTextUnderAllItsNames) {
    peers.write("public.utf8-plain-text", "voilà");
    expectValue("UTF8_STRING", "UTF8_STRING", "voilà");
    expectValue("text/plain;charset=utf-8", "text/plain;charset=utf-8", "voilà");
    expectValue("text/plain", "text/plain", "voilà");
    expectValue("STRING", "STRING", "voil\xE0");
    expectValue("TEXT", "UTF8_STRING", "voilà");
}

TEST_F(Requestor, isRefusedTextInAnEncodingThatCannotSayIt) {
    peers.write("public.utf8-plain-text", "αβγ");
    EXPECT_FALSE(requestor.convert("STRING"));
    EXPECT_FALSE(requestor.property().exists());
    expectValue("UTF8_STRING", "UTF8_STRING", "αβγ");
}

TEST_F(Requestor, getsFilesUnderAllTheirNames) {
    const std::vector<PasteboardItem> items{{{"public.file-url", Bytes::copyOf("file:///a")}},
                                            {{"public.file-url", Bytes::copyOf("file:///b%20c")}}};
    ASSERT_TRUE(peers.board().replaceWithItems(items));
    expectValue("text/uri-list", "text/uri-list", "file:///a\r\nfile:///b%20c\r\n");
    for (const char* const target : {"x-special/gnome-copied-files", "x-special/mate-copied-files"})
        expectValue(target, target, "copy\nfile:///a\nfile:///b%20c");
}

TEST_F(Requestor, getsAnEmptyValue) {
    peers.write("public.utf8-plain-text", "");
    expectValue("UTF8_STRING", "UTF8_STRING", "");
}

TEST_F(Requestor, learnsTheTimeOfTheOwnership) {
    ScriptedRequestor clock(peers.display());
    const auto before = clock.fetchTime();
    peers.write("public.utf8-plain-text", "text");
    const auto after = clock.fetchTime();
    const auto value = requestor.read("TIMESTAMP");
    ASSERT_TRUE(value);
    EXPECT_EQ(value->type, "INTEGER");
    EXPECT_EQ(value->format, 32);
    ASSERT_EQ(value->numbers().size(), 1U);
    EXPECT_GE(value->numbers().front(), before);
    EXPECT_LE(value->numbers().front(), after);
    // The time is the server's own: a request with an earlier time does not take the selection.
    xcb_set_selection_owner(requestor.connection(), requestor.window(), requestor.atom("CLIPBOARD"),
                            value->numbers().front() - 1);
    EXPECT_NE(requestor.ownerOfClipboard(), requestor.window());
    xcb_set_selection_owner(requestor.connection(), requestor.window(), requestor.atom("CLIPBOARD"),
                            value->numbers().front());
    EXPECT_EQ(requestor.ownerOfClipboard(), requestor.window());
}

TEST_F(Requestor, isAnsweredInItsOwnWords) {
    peers.write("public.utf8-plain-text", "text");
    const auto now = requestor.fetchTime();
    for (const char* const target : {"UTF8_STRING", "no/such-target"}) {
        requestor.ask(target, ScriptedRequestor::usualProperty, now);
        const auto answer = requestor.awaitAnswer();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->requestor, requestor.window());
        EXPECT_EQ(answer->selection, requestor.atom("CLIPBOARD"));
        EXPECT_EQ(answer->target, requestor.atom(target));
        EXPECT_EQ(answer->time, now);
    }
}

TEST_F(Requestor, isRefusedAnUnknownTargetAndFindsNothingInItsProperty) {
    peers.write("public.utf8-plain-text", "text");
    for (const char* const target : {"image/png", "INCR", "DELETE", "ATOM_PAIR", "INSERT_SELECTION",
                                     "public.utf8-plain-text", "COMPOUND_TEXT", "TEXT/PLAIN"}) {
        EXPECT_FALSE(requestor.convert(target)) << target;
        EXPECT_FALSE(requestor.property().exists()) << target;
    }
}

TEST_F(Requestor, isRefusedWhenItAskedBeforeTheOwnership) {
    const auto earlier = requestor.fetchTime();
    xcb_timestamp_t since = 0;
    do {
        peers.write("public.utf8-plain-text", "text");
        since = requestor.read("TIMESTAMP")->numbers().front();
    } while (since == earlier); // in the same millisecond
    EXPECT_FALSE(requestor.convert("UTF8_STRING", "REQUESTED", earlier));
    EXPECT_FALSE(requestor.convert("UTF8_STRING", "REQUESTED", since - 1));
    EXPECT_FALSE(requestor.convert("TARGETS", "REQUESTED", since - 1));
    EXPECT_FALSE(requestor.property().exists());
    EXPECT_TRUE(requestor.convert("UTF8_STRING", "REQUESTED", since));
    EXPECT_TRUE(requestor.convert("UTF8_STRING", "REQUESTED", since + 1));
    EXPECT_TRUE(requestor.convert("UTF8_STRING", "REQUESTED", XCB_CURRENT_TIME));
}

TEST_F(Requestor, withoutAPropertyGetsTheValueUnderTheTargetsName) {
    peers.write("public.utf8-plain-text", "text");
    requestor.askWithoutProperty("UTF8_STRING");
    const auto answer = requestor.awaitAnswer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->property, requestor.atom("UTF8_STRING"));
    EXPECT_EQ(requestor.takeProperty("UTF8_STRING").bytes, "text");
    requestor.askWithoutProperty("image/png");
    EXPECT_EQ(requestor.awaitAnswer()->property, xcb_atom_t{XCB_ATOM_NONE});
}

TEST_F(Requestor, whoAsksForSavingGetsAnEmptyAnswer) {
    peers.write("public.utf8-plain-text", "text");
    ASSERT_TRUE(requestor.convert("SAVE_TARGETS"));
    const auto answer = requestor.takeProperty();
    EXPECT_EQ(answer.type, "NULL");
    EXPECT_EQ(answer.bytes, "");
    EXPECT_EQ(peers.text(), "text");
}

TEST_F(Requestor, ofSeveralTargetsGetsThoseThatThereAre) {
    peers.write("public.utf8-plain-text", "voilà");
    EXPECT_THAT(multiple({{"UTF8_STRING", "A"}, {"image/png", "B"}, {"STRING", "C"}, {"TIMESTAMP", "D"}}),
                testing::Optional(ElementsAre("A", "", "C", "D")));
    EXPECT_EQ(requestor.takeProperty("A").bytes, "voilà");
    EXPECT_FALSE(requestor.property("B").exists());
    EXPECT_EQ(requestor.takeProperty("C").bytes, "voil\xE0");
    EXPECT_EQ(requestor.takeProperty("D").type, "INTEGER");
}

TEST_F(Requestor, ofSeveralLargeTargetsGetsEachInIncrementsOfItsOwn) {
    const std::string bytes = distinctBytes(std::size_t{18} << 20);
    peers.write("public.utf8-plain-text", bytes);
    EXPECT_THAT(multiple({{"UTF8_STRING", "A"}, {"text/plain", "B"}}),
                testing::Optional(ElementsAre("A", "B")));
    EXPECT_EQ(requestor.takeProperty("B").type, "INCR");
    EXPECT_EQ(requestor.takeProperty("A").type, "INCR");
    const auto second = requestor.readIncrements("B");
    const auto first = requestor.readIncrements("A");
    ASSERT_TRUE(first && second);
    EXPECT_EQ(first->type, "UTF8_STRING");
    EXPECT_EQ(second->type, "text/plain");
    EXPECT_TRUE(first->bytes == bytes);
    EXPECT_TRUE(second->bytes == bytes);
    peers.settle();
    EXPECT_FALSE(requestor.property("A").exists());
    EXPECT_FALSE(requestor.property("B").exists());
}

TEST_F(Requestor, ofNoTargetsGetsNone) {
    peers.write("public.utf8-plain-text", "text");
    EXPECT_THAT(multiple({}), testing::Optional(testing::IsEmpty()));
}

TEST_F(Requestor, ofTargetsInTargetsOrWithoutPropertiesGetsNone) {
    peers.write("public.utf8-plain-text", "text");
    EXPECT_THAT(
        multiple({{"MULTIPLE", "PAIRS"}, {"MULTIPLE", "A"}, {"UTF8_STRING", ""}, {"UTF8_STRING", "B"}}),
        testing::Optional(ElementsAre("", "", "", "B")));
    EXPECT_FALSE(requestor.property("A").exists());
}

TEST_F(Requestor, ofAnOddListOfTargetsGetsThePairs) {
    peers.write("public.utf8-plain-text", "text");
    requestor.setAtoms("PAIRS", "ATOM_PAIR",
                       {requestor.atom("UTF8_STRING"), requestor.atom("A"), requestor.atom("STRING")});
    EXPECT_TRUE(requestor.convert("MULTIPLE", "PAIRS"));
    EXPECT_EQ(requestor.takeProperty("PAIRS").numbers().size(), 2U);
    EXPECT_EQ(requestor.takeProperty("A").bytes, "text");
}

TEST_F(Requestor, ofAListOfTargetsThatIsNoneIsRefused) {
    peers.write("public.utf8-plain-text", "text");
    EXPECT_FALSE(requestor.convert("MULTIPLE", "MISSING"));
    requestor.setBytes("PAIRS", "ATOM_PAIR", "UTF8_STRING");
    EXPECT_FALSE(requestor.convert("MULTIPLE", "PAIRS"));
    requestor.askWithoutProperty("MULTIPLE");
    EXPECT_EQ(requestor.awaitAnswer()->property, xcb_atom_t{XCB_ATOM_NONE});
}

TEST_F(Requestor, canAskFor256TargetsAtOnceAndNotForMore) {
    peers.write("public.utf8-plain-text", "text");
    std::vector<std::pair<std::string, std::string>> pairs;
    std::vector<std::string> properties;
    for (int i = 0; i < 256; ++i) {
        properties.push_back("P" + std::to_string(i));
        pairs.emplace_back("UTF8_STRING", properties.back());
    }
    EXPECT_THAT(multiple(pairs), testing::Optional(ElementsAreArray(properties)));
    EXPECT_EQ(requestor.takeProperty("P255").bytes, "text");
    pairs.emplace_back("UTF8_STRING", "P256");
    EXPECT_EQ(multiple(pairs), std::nullopt);
    EXPECT_FALSE(requestor.property("P256").exists());
    // Half a pair beyond the limit is too much as well.
    requestor.setAtoms("PAIRS", "ATOM_PAIR", std::vector<xcb_atom_t>(513, requestor.atom("UTF8_STRING")));
    EXPECT_FALSE(requestor.convert("MULTIPLE", "PAIRS"));
}

TEST_F(Requestor, isAnsweredByNobodyButTheOwner) {
    peers.write("public.utf8-plain-text", "text");
    EXPECT_TRUE(peers.isServing());
    ScriptedOwner other(peers.display());
    other.offerValue("UTF8_STRING", "other's");
    other.take();
    EXPECT_FALSE(peers.isServing());
    expectValue("UTF8_STRING", "UTF8_STRING", "other's");
}

TEST_F(Requestor, whoAsksInTheOwnersOldNameIsRefused) {
    peers.write("public.utf8-plain-text", "text");
    const xcb_window_t window = requestor.ownerOfClipboard();
    ScriptedOwner other(peers.display());
    other.take();
    // A request that was on its way to the old owner when the owner changed.
    xcb_selection_request_event_t request{};
    request.response_type = XCB_SELECTION_REQUEST;
    request.owner = window;
    request.requestor = requestor.window();
    request.selection = requestor.atom("CLIPBOARD");
    request.target = requestor.atom("UTF8_STRING");
    request.property = requestor.atom("REQUESTED");
    char bytes[32] = {};
    std::memcpy(bytes, &request, sizeof request);
    xcb_send_event(requestor.connection(), 0, window, XCB_EVENT_MASK_NO_EVENT, bytes);
    const auto answer = requestor.awaitAnswer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(answer->property, xcb_atom_t{XCB_ATOM_NONE});
    EXPECT_FALSE(requestor.property().exists());
}

} // namespace

} // namespace tavel
