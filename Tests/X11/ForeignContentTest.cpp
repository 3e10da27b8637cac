#include "Tests/Support/ReadingLimits.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>

#include <map>
#include <string>

namespace tavel {

namespace {

using testing::ElementsAre;

class ForeignContent : public testing::Test {
protected:
    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
};

TEST_F(ForeignContent, textAnsweredAsCompoundTextIsLatin1WithoutEscapes) {
    owner.offer({"TEXT"});
    owner.on("TEXT", owner.value("COMPOUND_TEXT", "voil\xE0"));
    owner.take();
    EXPECT_EQ(peers.text(), "voilà");
}

TEST_F(ForeignContent, compoundTextInOtherCharacterSetsIsNotReadWrongly) {
    owner.offer({"TEXT", "STRING"});
    owner.on("TEXT", owner.value("COMPOUND_TEXT", "\x1B\x24\x29\x41\xC4\xE3"));
    owner.on("STRING", [this](const auto& request) { owner.refuse(request); });
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
}

TEST_F(ForeignContent, textAnsweredInUtf8UnderTextIsUtf8) {
    owner.offer({"TEXT"});
    owner.on("TEXT", owner.value("UTF8_STRING", "voilà"));
    owner.take();
    EXPECT_EQ(peers.text(), "voilà");
}

TEST_F(ForeignContent, textIn16Or32BitsIsNoText) {
    for (const int bits : {16, 32}) {
        owner.offer({"UTF8_STRING"});
        owner.on("UTF8_STRING", owner.value("UTF8_STRING", "abcdefgh", bits));
        owner.take();
        EXPECT_EQ(peers.text(), std::nullopt) << bits;
    }
}

TEST_F(ForeignContent, dataIn16BitsHasAllItsBytes) {
    const std::string bytes = distinctBytes(10 * 1024 * 1024 + 2);
    owner.offer({"application/x-numbers"});
    owner.on("application/x-numbers", owner.value("application/x-numbers", bytes, 16));
    owner.take();
    EXPECT_TRUE(peers.data("application/x-numbers") == bytes);
}

TEST_F(ForeignContent, filesWhoseListIsRefusedAreReadFromTheFileManagersForm) {
    owner.offer({"text/uri-list", "x-special/gnome-copied-files"});
    owner.on("x-special/gnome-copied-files", owner.value("x-special/gnome-copied-files", "copy\nfile:///a"));
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/a"));
}

TEST_F(ForeignContent, valuesThatAreTakenOverKeepTheirForm) {
    const std::map<std::string, ScriptedRequestor::Property> values{
        {"net.example.numbers", {"INTEGER", 32, "abcdefgh"}},
        {"net.example.words", {"net.example.other-type", 16, "abcdef"}},
        {"net.example.many-numbers", {"CARDINAL", 32, distinctBytes(5'000'000)}},
        {"image/png", {"image/png", 8, "\x89PNG"}},
    };
    owner.offer({"net.example.numbers", "net.example.words", "net.example.many-numbers", "image/png"});
    for (const auto& [target, value] : values)
        owner.on(target, owner.value(value.type, value.bytes, value.format));
    owner.take();
    ScriptedRequestor requestor(peers.display());
    for (const std::string added : {"net.example.first", "net.example.second"}) {
        const Representation one{added, Bytes::copyOf("1")};
        ASSERT_TRUE(peers.board().addTypes({&one, 1}));
        for (const auto& [target, value] : values) {
            const auto read = requestor.read(target);
            ASSERT_TRUE(read) << target;
            EXPECT_EQ(read->type, value.type);
            EXPECT_EQ(read->format, value.format);
            EXPECT_TRUE(read->bytes == value.bytes) << target;
        }
    }
}

} // namespace

} // namespace tavel
