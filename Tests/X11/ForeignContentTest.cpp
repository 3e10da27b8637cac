#include "Tests/Support/ReadingLimits.h"
#include "Tests/X11/ScriptedOwner.h"
#include "Tests/X11/ScriptedRequestor.h"
#include "Tests/X11/X11Peers.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <climits>
#include <map>
#include <string>

namespace tavel {

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class ForeignContent : public testing::Test {
protected:
    X11Peers peers{longTimeOuts()};
    ScriptedOwner owner{peers.display()};
};

TEST_F(ForeignContent, textLosesTheZerosAtItsEnd) {
    owner.offerValue("UTF8_STRING", "a\0b\0\0"s);
    owner.take();
    EXPECT_EQ(peers.text(), "a\0b"s);
}

TEST_F(ForeignContent, textThatIsInvalidUtf8IsNoText) {
    owner.offerValue("UTF8_STRING", "a\xFF");
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.data("public.utf8-plain-text"), "a\xFF");
}

TEST_F(ForeignContent, textAsStringAloneIsLatin1) {
    owner.offerValue("STRING", "voil\xE0");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "voilà");
}

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

TEST_F(ForeignContent, mimeTypeInCapitalsIsAskedForInCapitals) {
    owner.offerValue("text/plain;charset=UTF-8", "voilà");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "voilà");
    EXPECT_EQ(owner.countOf("text/plain;charset=UTF-8"), 1U);
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

TEST_F(ForeignContent, dataOfNoLengthIsThere) {
    owner.offerValue("image/png", "");
    owner.take();
    EXPECT_EQ(peers.data("public.png"), "");
}

TEST_F(ForeignContent, htmlInUtf16IsConvertedFromBothByteOrders) {
    owner.offerValue("text/html", "\xFF\xFE<\0p\0>\0\xE0\0\0\0"s);
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>à");
    owner.offerValue("text/html", "\xFE\xFF\0<\0p\0>\0\xE0"s);
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>à");
}

TEST_F(ForeignContent, uriListIsReadWithoutCommentsInAnyLineEnding) {
    owner.offerValue("text/uri-list",
                     "# two files\r\nfile:///etc/passwd\r\n\r\n#\r\nfile:///tmp/a%20b\nfile:///c\0"s);
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.file-url"));
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/etc/passwd", "/tmp/a b", "/c"));
}

TEST_F(ForeignContent, uriListNamesThisMachinesFilesAlone) {
    char host[HOST_NAME_MAX + 1] = {};
    ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
    owner.offerValue("text/uri-list", "file://" + std::string(host) +
                                          "/own\r\nfile://another.example/theirs\r\nhttps://example.org/x\r\n"
                                          "file://localhost/local\r\nno uri\r\n");
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/own", "/local"));
}

TEST_F(ForeignContent, copiedFilesOfFileManagersAreFilesOnTheirOwn) {
    owner.offerValue("x-special/gnome-copied-files", "copy\nfile:///a\nfile:///b%C3%A0");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.file-url"));
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/a", "/bà"));
    owner.offerValue("x-special/mate-copied-files", "cut\nfile:///a\n");
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/a"));
    owner.offerValue("x-special/nautilus-clipboard",
                     "x-special/nautilus-clipboard\ncopy\nfile:///a\nfile:///b\n");
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/a", "/b"));
}

TEST_F(ForeignContent, filesWhoseListIsRefusedAreReadFromTheFileManagersForm) {
    owner.offer({"text/uri-list", "x-special/gnome-copied-files"});
    owner.on("x-special/gnome-copied-files", owner.value("x-special/gnome-copied-files", "copy\nfile:///a"));
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/a"));
}

TEST_F(ForeignContent, fileListOfRubbishNamesNoFiles) {
    owner.offerValue("text/uri-list", distinctBytes(100'000) + "\0\xFF\r\n\n\r#\r\nfile:\r\nfile://\r\n%"s);
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, IsEmpty());
}

// Each program serves the other while it waits for the other's value.
TEST_F(ForeignContent, ofTwoProgramsThatReadEachOtherAtOnceArrivesAtBoth) {
    X11Program other(peers.display(), longTimeOuts());
    const std::string bytes = distinctBytes(std::size_t{20} << 20);
    const auto theirs = other.open("one");
    const auto ours = peers.program().open("one");
    const auto theirSecond = other.open("two");
    const auto ourSecond = peers.program().open("two");
    const PasteboardItem picture{{"public.png", Bytes::copyOf(bytes)}};
    EXPECT_TRUE(ours->replaceWithItems({&picture, 1}));
    EXPECT_TRUE(theirSecond->replaceWithItems({&picture, 1}));
    std::optional<Bytes> read;
    std::thread reading([&] { read = theirs->data("public.png", ample); });
    const auto readHere = ourSecond->data("public.png", ample);
    reading.join();
    EXPECT_TRUE(readHere && readHere->view() == bytes);
    EXPECT_TRUE(read && read->view() == bytes);
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
