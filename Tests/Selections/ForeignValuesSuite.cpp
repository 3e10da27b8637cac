#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/ReadingLimits.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <climits>
#include <thread>

namespace tavel {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_P(ForeignValues, textLosesTheZerosAtItsEnd) {
    owner.offerValue("UTF8_STRING", "a\0b\0\0"s);
    owner.take();
    EXPECT_EQ(peers.text(), "a\0b"s);
}

TEST_P(ForeignValues, textThatIsInvalidUtf8IsNoText) {
    owner.offerValue("UTF8_STRING", "a\xFF");
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.data("public.utf8-plain-text"), "a\xFF");
}

TEST_P(ForeignValues, textAsStringAloneIsLatin1) {
    owner.offerValue("STRING", "voil\xE0");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "voilà");
}

TEST_P(ForeignValues, mimeTypeInCapitalsIsAskedForInCapitals) {
    owner.offerValue("text/plain;charset=UTF-8", "voilà");
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.utf8-plain-text"));
    EXPECT_EQ(peers.text(), "voilà");
    EXPECT_EQ(owner.countOf("text/plain;charset=UTF-8"), 1U);
}

TEST_P(ForeignValues, dataOfNoLengthIsThere) {
    owner.offerValue("image/png", "");
    owner.take();
    EXPECT_EQ(peers.data("public.png"), "");
}

TEST_P(ForeignValues, htmlInUtf16IsConvertedFromBothByteOrders) {
    owner.offerValue("text/html", "\xFF\xFE<\0p\0>\0\xE0\0\0\0"s);
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>à");
    owner.offerValue("text/html", "\xFE\xFF\0<\0p\0>\0\xE0"s);
    owner.take();
    EXPECT_EQ(peers.data("public.html"), "<p>à");
}

TEST_P(ForeignValues, uriListIsReadWithoutCommentsInAnyLineEnding) {
    owner.offerValue("text/uri-list",
                     "# two files\r\nfile:///etc/passwd\r\n\r\n#\r\nfile:///tmp/a%20b\nfile:///c\0"s);
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.file-url"));
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/etc/passwd", "/tmp/a b", "/c"));
}

TEST_P(ForeignValues, uriListNamesThisMachinesFilesAlone) {
    char host[HOST_NAME_MAX + 1] = {};
    ASSERT_EQ(gethostname(host, sizeof host - 1), 0);
    owner.offerValue("text/uri-list", "file://" + std::string(host) +
                                          "/own\r\nfile://another.example/theirs\r\nhttps://example.org/x\r\n"
                                          "file://localhost/local\r\nno uri\r\n");
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, ElementsAre("/own", "/local"));
}

TEST_P(ForeignValues, copiedFilesOfFileManagersAreFilesOnTheirOwn) {
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

TEST_P(ForeignValues, fileListOfRubbishNamesNoFiles) {
    owner.offerValue("text/uri-list", distinctBytes(100'000) + "\0\xFF\r\n\n\r#\r\nfile:\r\nfile://\r\n%"s);
    owner.take();
    EXPECT_THAT(peers.board().files(everyFile).paths, IsEmpty());
}

// Each program serves the other while it waits for the other's value.
TEST_P(ForeignValues, ofTwoProgramsThatReadEachOtherAtOnceArrivesAtBoth) {
    const auto other = peers.makeProgram();
    const std::string bytes = distinctBytes(std::size_t{20} << 20);
    const auto theirs = other->open(std::nullopt);
    const auto ours = peers.program().open(std::nullopt);
    const auto theirSecond = other->open(otherSelection);
    const auto ourSecond = peers.program().open(otherSelection);
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

} // namespace tavel
