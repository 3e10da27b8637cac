#include "Linux/Contents/OwnedTargets.h"

#include "Linux/Contents/TargetNames.h"

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

using pasteboardItems::Items;
using Targets = std::vector<std::string>;

const std::string text = "public.utf8-plain-text";
const std::string file = "public.file-url";

Representation with(std::string type, std::string_view data) {
    return {std::move(type), Bytes::copyOf(data)};
}

Items texts(std::vector<std::string_view> all) {
    Items items;
    for (const std::string_view one : all)
        items.push_back({with(text, one)});
    return items;
}

/// The value for a requestor: the type and the content of the property.
using Answer = std::optional<std::pair<std::string, std::string>>;

Answer answer(const Items& items, const std::string& target) {
    const auto value = valueForTarget(items, target);
    if (!value)
        return std::nullopt;
    return std::pair(value->type, std::string(value->bytes.view()));
}

Answer as(std::string_view type, std::string_view content) {
    return std::pair(std::string(type), std::string(content));
}

const Targets textTargets{"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"};
const Targets fileTargets{"text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files"};

/// The types whose data is passed on unchanged.
const std::vector<std::pair<std::string, Targets>> dataTypes{
    {"public.html", {"text/html"}},
    {"public.rtf", {"text/rtf", "application/rtf", "text/richtext"}},
    {"com.adobe.pdf", {"application/pdf"}},
    {"public.png", {"image/png"}},
    {"public.tiff", {"image/tiff"}},
    {"public.jpeg", {"image/jpeg"}},
    {"com.compuserve.gif", {"image/gif"}},
    {"public.svg-image", {"image/svg+xml"}},
    {"org.webmproject.webp", {"image/webp"}},
    {"com.example.private", {"com.example.private"}},
    {"application/x-example", {"application/x-example"}},
};

TEST(OwnedTargets, areNoneWithoutItems) {
    EXPECT_EQ(contentTargets({}), Targets{});
    EXPECT_EQ(contentTargets({{}}), Targets{});
    EXPECT_EQ(contentTargets({{}, {}}), Targets{});
    EXPECT_EQ(answer({}, "UTF8_STRING"), std::nullopt);
    EXPECT_EQ(answer({{}}, "UTF8_STRING"), std::nullopt);
    EXPECT_EQ(answer({{}}, "text/uri-list"), std::nullopt);
}

TEST(OwnedTargets, offerTextAndFilesUnderAllTheirNames) {
    EXPECT_EQ(contentTargets(texts({"a"})), textTargets);
    EXPECT_EQ(contentTargets({{with(file, "file:///a")}}), fileTargets);
}

TEST(OwnedTargets, offerAndGiveEveryOtherTypesDataAsItIs) {
    const std::string_view data("\0\xFF\xFE d\xC3\xA9\0", 8);
    for (const auto& [type, targets] : dataTypes) {
        const Items items{{with(type, data)}};
        EXPECT_EQ(contentTargets(items), targets);
        for (const std::string& target : targets)
            EXPECT_EQ(answer(items, target), as(target, data));
    }
}

TEST(OwnedTargets, copyNoData) {
    const Items items{{with("public.png", "picture"), with(text, "text")}};
    EXPECT_EQ(valueForTarget(items, "image/png")->bytes.data(), items[0][0].data.data());
    EXPECT_EQ(valueForTarget(items, "UTF8_STRING")->bytes.data(), items[0][1].data.data());
}

TEST(OwnedTargets, comeInTheItemsOrderEachOnce) {
    const Items items{{with("public.png", "p"), with(text, "a")},
                      {with(text, "b"), with("public.html", "h")},
                      {with("com.example.private", "x"), with("public.png", "q")}};
    EXPECT_EQ(contentTargets(items),
              (Targets{"image/png", "UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT",
                       "text/html", "com.example.private"}));
}

TEST(OwnedTargets, areOfferedOnceAlsoWhereATypeHasAnothersTargetForItsName) {
    EXPECT_EQ(contentTargets({{with("public.png", "a"), with("image/png", "b")}}), Targets{"image/png"});
}

TEST(OwnedTargets, giveTheFirstItemsDataThatHasTheType) {
    const Items items{{with(text, "a")}, {with("public.png", "first")}, {with("public.png", "second")}};
    EXPECT_EQ(answer(items, "image/png"), as("image/png", "first"));
}

TEST(OwnedTargets, giveTextInTheEncodingThatTheTargetNames) {
    const Items items = texts({"déjà"});
    EXPECT_EQ(answer(items, "UTF8_STRING"), as("UTF8_STRING", "déjà"));
    EXPECT_EQ(answer(items, "text/plain;charset=utf-8"), as("text/plain;charset=utf-8", "déjà"));
    EXPECT_EQ(answer(items, "text/plain"), as("text/plain", "déjà"));
    EXPECT_EQ(answer(items, "STRING"), as("STRING", "d\xE9j\xE0"));
}

TEST(OwnedTargets, sayInTheTypeThatTextIsUtf8) {
    EXPECT_EQ(answer(texts({"déjà"}), "TEXT"), as("UTF8_STRING", "déjà"));
    EXPECT_EQ(answer(texts({"ascii"}), "TEXT"), as("UTF8_STRING", "ascii"));
}

TEST(OwnedTargets, refuseStringForACharacterOutsideLatin1) {
    const Items items = texts({"10 €"});
    EXPECT_EQ(answer(items, "STRING"), std::nullopt);
    for (const std::string target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"})
        EXPECT_EQ(answer(items, target), as(target, "10 €"));
    EXPECT_EQ(answer(items, "TEXT"), as("UTF8_STRING", "10 €"));
}

TEST(OwnedTargets, joinTheTextsOfAllItems) {
    const Items items = texts({"é", "", "b"});
    EXPECT_EQ(answer(items, "UTF8_STRING"), as("UTF8_STRING", "é\n\nb"));
    EXPECT_EQ(answer(items, "text/plain"), as("text/plain", "é\n\nb"));
    EXPECT_EQ(answer(items, "STRING"), as("STRING", "\xE9\n\nb"));
    EXPECT_EQ(answer(items, "TEXT"), as("UTF8_STRING", "é\n\nb"));
}

TEST(OwnedTargets, refuseStringForACharacterOfAnyItemOutsideLatin1) {
    EXPECT_EQ(answer(texts({"a", "€"}), "STRING"), std::nullopt);
}

TEST(OwnedTargets, giveTextThatIsNoUtf8AsItIs) {
    const Items items = texts({"d\xE9j\xE0"});
    EXPECT_EQ(contentTargets(items), textTargets);
    for (const std::string target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain"})
        EXPECT_EQ(answer(items, target), as(target, "d\xE9j\xE0"));
    EXPECT_EQ(answer(items, "TEXT"), as("UTF8_STRING", "d\xE9j\xE0"));
    EXPECT_EQ(answer(items, "STRING"), std::nullopt) << "nobody knows its characters";
}

TEST(OwnedTargets, leaveTextThatIsNoUtf8OutWhereThereIsOther) {
    EXPECT_EQ(answer(texts({"\xFF", "a", "\xFF", "b"}), "UTF8_STRING"), as("UTF8_STRING", "a\nb"));
}

TEST(OwnedTargets, giveAnEmptyText) {
    for (const Items& items : {texts({""}), Items{{{text, Bytes()}}}}) {
        for (const std::string target : {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING"})
            EXPECT_EQ(answer(items, target), as(target, ""));
        EXPECT_EQ(answer(items, "TEXT"), as("UTF8_STRING", ""));
    }
}

TEST(OwnedTargets, keepZeroBytesOfAText) {
    const std::string_view content("a\0b\0", 4);
    for (const std::string target : {"UTF8_STRING", "text/plain", "STRING"})
        EXPECT_EQ(answer(texts({content}), target), as(target, content));
}

TEST(OwnedTargets, giveTheFilesOfAllItems) {
    const Items items{{with(file, "file:///a"), with("public.png", "p")},
                      {with(text, "no file")},
                      {with(file, "file:///b%20c/")},
                      {with(file, "file:///a")}};
    EXPECT_EQ(answer(items, "text/uri-list"),
              as("text/uri-list", "file:///a\r\nfile:///b%20c/\r\nfile:///a\r\n"));
    for (const std::string target : {"x-special/gnome-copied-files", "x-special/mate-copied-files"})
        EXPECT_EQ(answer(items, target), as(target, "copy\nfile:///a\nfile:///b%20c/\nfile:///a"));
}

TEST(OwnedTargets, giveOneFile) {
    const Items items{{with(file, "file:///a")}};
    EXPECT_EQ(answer(items, "text/uri-list"), as("text/uri-list", "file:///a\r\n"));
    EXPECT_EQ(answer(items, "x-special/gnome-copied-files"),
              as("x-special/gnome-copied-files", "copy\nfile:///a"));
}

TEST(OwnedTargets, giveNothingThatTheItemsHaveNot) {
    const Items items = texts({"a"});
    for (const std::string target :
         {"text/html", "image/png", "text/uri-list", "x-special/gnome-copied-files", "com.example.private",
          "", "utf8_string"})
        EXPECT_EQ(answer(items, target), std::nullopt) << target;
}

TEST(OwnedTargets, giveNothingForTheProtocolsTargets) {
    for (const std::string name : {"TARGETS", "MULTIPLE", "TIMESTAMP", "SAVE_TARGETS", "DELETE",
                                   "INSERT_SELECTION", "INSERT_PROPERTY", "INCR", "ATOM_PAIR"})
        EXPECT_EQ(answer({{with(text, "a"), with(name, "b")}}, name), std::nullopt) << name;
}

TEST(OwnedTargets, giveNothingUnderANameThatIsOnlyRead) {
    const Items items{{with(text, "a"), with("public.html", "<b>"), with(file, "file:///a")}};
    for (const std::string target : {"text/html;charset=utf-8", "text/plain;charset=utf8", "COMPOUND_TEXT",
                                     "x-special/nautilus-clipboard"})
        EXPECT_EQ(answer(items, target), std::nullopt) << target;
}

TEST(OwnedTargets, giveNothingUnderASpellingThatIsNotOffered) {
    const Items items{{with(text, "a"), with("public.html", "<b>")}};
    for (const std::string target : {"text/plain;charset=UTF-8", "Text/Plain", "TEXT/HTML", "text/ html"})
        EXPECT_EQ(answer(items, target), std::nullopt) << target;
}

TEST(OwnedTargets, giveNothingUnderAKnownTypesIdentifier) {
    const Items items{{with(text, "a"), with("public.html", "<b>"), with(file, "file:///a")}};
    for (const std::string& type : {text, file, std::string("public.html")})
        EXPECT_EQ(answer(items, type), std::nullopt) << type;
}

/// Expects a value for every target that is offered for the type.
TEST(OwnedTargets, giveEverythingThatTheyOffer) {
    for (const std::string type :
         {"public.utf8-plain-text", "public.file-url", "public.html", "public.rtf", "public.png", "x",
          "com.example.private", "application/x-example", "text/html", "Text/HTML", "image/png",
          "UTF8_STRING", "STRING", "COMPOUND_TEXT", "text/plain;charset=UTF-8", "text/uri-list"}) {
        if (!targetName::canBeType(type))
            continue;
        const Items items{{with(type, "data")}};
        for (const std::string& target : contentTargets(items))
            EXPECT_NE(answer(items, target), std::nullopt) << target << " for " << type;
    }
}

TEST(OwnedTargets, giveHtmlWithoutTheByteOrderMarkThatABrowserWouldShow) {
    const Items items{{with("public.html", "\xEF\xBB\xBF<b>")}};
    EXPECT_EQ(valueForTarget(items, "text/html")->bytes.view(), "<b>");
    EXPECT_EQ(valueForTarget(Items{{with("public.html", "\xEF\xBB\xBF")}}, "text/html")->bytes.view(), "");
    EXPECT_EQ(valueForTarget(Items{{with(text, "\xEF\xBB\xBFx")}}, "UTF8_STRING")->bytes.view(),
              "\xEF\xBB\xBFx");
}

} // namespace
} // namespace tavel
