#include "Linux/Contents/TargetNames.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

using Targets = std::vector<std::string>;

struct TypeTargets {
    std::string type;
    Targets offered;
    Targets read; // all of them, the best first
};

const std::string text = "public.utf8-plain-text";
const std::string files = "public.file-url";

const std::vector<TypeTargets>& table() {
    static const std::vector<TypeTargets> types{
        {text,
         {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain", "STRING", "TEXT"},
         {"UTF8_STRING", "text/plain;charset=utf-8", "text/plain;charset=utf8", "text/plain", "STRING",
          "TEXT", "COMPOUND_TEXT"}},
        {"public.html", {"text/html"}, {"text/html", "text/html;charset=utf-8"}},
        {"public.rtf",
         {"text/rtf", "application/rtf", "text/richtext"},
         {"text/rtf", "application/rtf", "text/richtext"}},
        {"com.adobe.pdf", {"application/pdf"}, {"application/pdf"}},
        {"public.png", {"image/png"}, {"image/png"}},
        {"public.tiff", {"image/tiff"}, {"image/tiff"}},
        {"public.jpeg", {"image/jpeg"}, {"image/jpeg"}},
        {"com.compuserve.gif", {"image/gif"}, {"image/gif"}},
        {"public.svg-image", {"image/svg+xml"}, {"image/svg+xml"}},
        {"org.webmproject.webp", {"image/webp"}, {"image/webp"}},
        {files,
         {"text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files"},
         {"text/uri-list", "x-special/gnome-copied-files", "x-special/mate-copied-files",
          "x-special/nautilus-clipboard"}},
    };
    return types;
}

const Targets protocol{"TARGETS",          "MULTIPLE",        "TIMESTAMP", "SAVE_TARGETS", "DELETE",
                       "INSERT_SELECTION", "INSERT_PROPERTY", "INCR",      "ATOM_PAIR"};

const Targets privateTypes{
    "com.example.private",   "dyn.ah62d4rv4gu8y",           "x",          "Ünïcode", "with space",
    "application/x-example", "application/vnd.Example+XML", "public.data"};

std::vector<std::string> giving(std::string_view type, const Targets& offered) {
    return targetName::giving(type, offered);
}

TEST(TargetNames, areOfferedForEachType) {
    for (const TypeTargets& row : table())
        EXPECT_EQ(targetName::offeredFor(row.type), row.offered) << row.type;
}

TEST(TargetNames, areReadForEachType) {
    for (const TypeTargets& row : table()) {
        EXPECT_EQ(giving(row.type, row.read), row.read) << row.type;
        for (const std::string& target : row.read) {
            EXPECT_EQ(targetName::typeOf(target), row.type) << target;
            EXPECT_EQ(giving(row.type, {target}), Targets{target});
        }
    }
}

TEST(TargetNames, areOfTheirOwnTypeOnly) {
    for (const TypeTargets& row : table()) {
        for (const TypeTargets& other : table()) {
            if (other.type != row.type) {
                EXPECT_EQ(giving(row.type, other.read), Targets{}) << row.type << " from " << other.type;
            }
        }
    }
}

TEST(TargetNames, arePickedFromAmongAllThatAnOwnerOffers) {
    Targets everything = protocol;
    for (const TypeTargets& row : table())
        everything.insert(everything.end(), row.read.begin(), row.read.end());
    everything.insert(everything.end(), privateTypes.begin(), privateTypes.end());
    for (const TypeTargets& row : table())
        EXPECT_EQ(giving(row.type, everything), row.read) << row.type;
    for (const std::string& type : privateTypes)
        EXPECT_EQ(giving(type, everything), Targets{type});
}

TEST(TargetNames, comeInOurOrderWhateverTheOwnersIs) {
    for (const TypeTargets& row : table()) {
        Targets offered = row.read;
        std::ranges::sort(offered);
        do {
            ASSERT_EQ(giving(row.type, offered), row.read) << row.type;
        } while (std::ranges::next_permutation(offered).found);
    }
}

TEST(TargetNames, matchMimeNamesInAnyCaseAndComeAsTheOwnerSpellsThem) {
    for (const std::string target :
         {"text/plain;charset=UTF-8", "Text/Plain; charset=UTF-8", "text/plain;charset=\"utf-8\"",
          "TEXT/PLAIN;CHARSET=UTF-8", "text/plain ; charset=\"UTF-8\"", "text/plain; charset = utf-8",
          "text/plain;charset=UTF8", "text/plain; charset=\"utf8\"", "TEXT/plain"}) {
        EXPECT_EQ(targetName::typeOf(target), text) << target;
        EXPECT_EQ(giving(text, {target}), Targets{target});
    }
    EXPECT_EQ(targetName::typeOf("Text/HTML; Charset=\"UTF-8\""), "public.html");
    EXPECT_EQ(targetName::typeOf("IMAGE/PNG"), "public.png");
    EXPECT_EQ(targetName::typeOf("image/SVG+xml"), "public.svg-image");
    EXPECT_EQ(targetName::typeOf("Text/URI-List"), files);
    EXPECT_EQ(targetName::typeOf("X-Special/GNOME-Copied-Files"), files);
}

TEST(TargetNames, comeInEverySpellingThatIsOffered) {
    EXPECT_EQ(giving("public.png", {"IMAGE/PNG", "image/png"}), (Targets{"IMAGE/PNG", "image/png"}));
    EXPECT_EQ(giving(text, {"text/plain", "Text/Plain;charset=utf-8"}),
              (Targets{"Text/Plain;charset=utf-8", "text/plain"}));
}

TEST(TargetNames, keepTheirCaseWhereTheyAreNoMimeNames) {
    for (const std::string target : {"utf8_string", "string", "String", "text", "Text", "compound_text",
                                     "UTF8_STRING ", "\"STRING\"", "targets", "Multiple"}) {
        EXPECT_EQ(targetName::typeOf(target), target);
        EXPECT_EQ(giving(text, {target}), Targets{}) << target;
    }
}

TEST(TargetNames, takeAnotherEncodingForAnotherType) {
    for (const std::string target :
         {"text/plain;charset=iso-8859-1", "text/plain;charset=utf-16", "text/plain;charset=us-ascii",
          "text/plain;format=flowed", "text/html;charset=utf-16", "text/plain;", "text/plainer",
          "atext/plain"}) {
        EXPECT_EQ(targetName::typeOf(target), target);
        EXPECT_EQ(giving(text, {target}), Targets{}) << target;
    }
}

TEST(TargetNames, areTheTypesOwnForEveryOtherType) {
    for (const std::string& type : privateTypes) {
        EXPECT_EQ(targetName::offeredFor(type), Targets{type});
        EXPECT_EQ(targetName::typeOf(type), type);
        EXPECT_EQ(giving(type, {"UTF8_STRING", type, "image/png"}), Targets{type});
        EXPECT_EQ(giving(type, {"UTF8_STRING", type + "x", "image/png"}), Targets{});
    }
}

TEST(TargetNames, matchOtherTypesExactly) {
    EXPECT_EQ(giving("com.example.private", {"COM.EXAMPLE.PRIVATE"}), Targets{});
    EXPECT_EQ(giving("application/x-example", {"Application/X-Example"}), Targets{});
}

TEST(TargetNames, includeAKnownTypesIdentifierWhereNothingElseIsOffered) {
    for (const TypeTargets& row : table()) {
        EXPECT_EQ(targetName::typeOf(row.type), row.type);
        EXPECT_EQ(giving(row.type, {"com.example.private", row.type}), Targets{row.type});
        EXPECT_EQ(giving(row.type, {row.type, row.read.back()}), Targets{row.read.back()});
    }
}

TEST(TargetNames, giveNothingWhereNothingIsOffered) {
    EXPECT_EQ(giving(text, {}), Targets{});
    EXPECT_EQ(giving("com.example.private", {}), Targets{});
    EXPECT_EQ(giving("", {}), Targets{});
}

TEST(TargetNames, haveNoTypeWhereTheyArePartOfTheProtocol) {
    for (const std::string& name : protocol) {
        EXPECT_EQ(targetName::typeOf(name), std::nullopt) << name;
        EXPECT_FALSE(targetName::canBeType(name)) << name;
    }
}

TEST(TargetNames, giveNoTypeWhereTheyArePartOfTheProtocol) {
    for (const std::string& name : protocol) {
        EXPECT_EQ(giving(name, protocol), Targets{}) << name;
        EXPECT_EQ(giving(text, {name}), Targets{}) << name;
    }
}

TEST(TargetNames, giveATypeExactlyWhereItIsTheirs) {
    Targets targets = privateTypes;
    for (const TypeTargets& row : table()) {
        targets.push_back(row.type);
        targets.insert(targets.end(), row.read.begin(), row.read.end());
    }
    for (const std::string& target : targets) {
        for (const std::string& type : targets) {
            const Targets expected = targetName::typeOf(target) == type ? Targets{target} : Targets{};
            EXPECT_EQ(giving(type, {target}), expected) << type << " from " << target;
        }
    }
}

TEST(TargetNames, canBeTypesOfEveryKindOfName) {
    for (const TypeTargets& row : table())
        EXPECT_TRUE(targetName::canBeType(row.type)) << row.type;
    for (const std::string& type : privateTypes)
        EXPECT_TRUE(targetName::canBeType(type)) << type;
    for (const std::string_view type : {"targets", "TARGETS ", "TARGETS2", "INC", "\xFF", " "})
        EXPECT_TRUE(targetName::canBeType(type)) << type;
}

TEST(TargetNames, canBeNoTypeWithoutALengthOrWithAZeroByte) {
    EXPECT_FALSE(targetName::canBeType(""));
    EXPECT_FALSE(targetName::canBeType(std::string_view("\0", 1)));
    EXPECT_FALSE(targetName::canBeType(std::string_view("a\0", 2)));
    EXPECT_FALSE(targetName::canBeType(std::string_view("\0a", 2)));
    EXPECT_FALSE(targetName::canBeType(std::string_view("a\0b", 3)));
}

TEST(TargetNames, canBeTypesUpToTheLengthThatIsRead) {
    EXPECT_TRUE(targetName::canBeType(std::string(255, 'x')));
    EXPECT_FALSE(targetName::canBeType(std::string(256, 'x')));
}

} // namespace
} // namespace tavel
