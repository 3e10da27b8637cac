#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/ReadingLimits.h"

#include <gmock/gmock.h>

namespace tavel {

using testing::IsEmpty;

TEST_P(ReadingLimits, aTextIsReadUpToTheLimitWithTheTerminatorThatFollows) {
    const std::string text(1000, 'x');
    owner.offerValue("UTF8_STRING", text + '\0');
    owner.take();
    EXPECT_EQ(peers.board().string("public.utf8-plain-text", 1000)->view(), text);
    EXPECT_EQ(peers.board().string("public.utf8-plain-text", 999)->size(), 1000U);
}

TEST_P(ReadingLimits, aTextInLatin1IsCountedInUtf8) {
    owner.offer({"STRING"});
    owner.give("STRING", std::string(500, '\xE9'));
    owner.take();
    EXPECT_EQ(peers.board().string("public.utf8-plain-text", 1000)->size(), 1000U);
    EXPECT_EQ(peers.board().string("public.utf8-plain-text", 998)->size(), 999U);
}

TEST_P(ReadingLimits, htmlInUtf16IsReadUpToTheLimitInUtf8) {
    std::string utf16 = "\xFF\xFE";
    for (int i = 0; i < 1000; ++i)
        utf16 += std::string("x\0", 2);
    owner.offerValue("text/html", utf16);
    owner.take();
    EXPECT_EQ(peers.board().data("public.html", 1000)->view(), std::string(1000, 'x'));
    EXPECT_EQ(peers.board().data("public.html", 999)->size(), 1000U);
}

TEST_P(ReadingLimits, aListThatIsCutIsIncompleteIfItNamesAFileAndOfNoFilesIfNot) {
    constexpr FileListLimit limit{10, 1'000};
    const std::string long_ = std::string(20'000, 'x');
    for (const std::string& list :
         {"file:///a\r\n# " + long_, "file:///" + long_, "file:///a/" + long_ + "%E2"}) {
        owner.offerValue("text/uri-list", list);
        owner.take();
        EXPECT_FALSE(peers.board().files(limit).isComplete) << list.substr(0, 20);
    }
    for (const std::string& list : {"# " + long_, "https://example.net/" + long_, long_}) {
        owner.offerValue("text/uri-list", list);
        owner.take();
        const FileList files = peers.board().files(limit);
        EXPECT_TRUE(files.isComplete) << list.substr(0, 20);
        EXPECT_THAT(files.paths, IsEmpty());
    }
}

TEST_P(ReadingLimits, theFirstFileUrlIsWholeOrTooLong) {
    const auto read = [this](const std::string& list, std::size_t limit) {
        owner.offerValue("text/uri-list", list);
        owner.take();
        const auto url = peers.board().data("public.file-url", limit);
        return url ? std::optional(std::string(url->view())) : std::nullopt;
    };
    EXPECT_EQ(read("file:///abc\r\nfile:///" + std::string(20'000, 'x'), 11), "file:///abc");
    EXPECT_EQ(read("file:///abc\r\n", 10), "file:///abc");
    EXPECT_EQ(read("file:///abcd\r\n", 10), "file:///abc");
    EXPECT_EQ(read("# " + std::string(4'095, 'c') + "\r\nfile:///" + std::string(9'000, 'x'), 100),
              std::nullopt);
}

TEST_P(ReadingLimits, whatIsTakenOverToAddTypesLosesTheValuesThatAreTooLarge) {
    const std::string part(8'000'000, 'x');
    owner.offer({"image/png", "UTF8_STRING"});
    owner.giveParts("image/png", std::vector<std::string>(17, part));
    owner.give("UTF8_STRING", "text");
    owner.take();
    const Representation added{"net.example.added", Bytes::copyOf("added")};
    EXPECT_TRUE(peers.board().addTypes({&added, 1}));
    EXPECT_EQ(peers.board().types(),
              (std::vector<std::string>{"public.utf8-plain-text", "net.example.added"}));
    EXPECT_EQ(peers.text(), "text");
}

} // namespace tavel
