#include "Tests/Unit/Agent/ExportFixture.h"

namespace tavel {
namespace {

using Operation = ScriptedPasteboard::Operation;
using Calls = std::vector<std::string>;

constexpr std::string_view invalidFormats = "Formats clipboard invalides";
constexpr std::string_view formatRefused = "Format clipboard refusé";
constexpr std::string_view formatsWriteFailed = "Écriture des formats impossible";
constexpr std::string_view changedDuringTransfer = "Le presse-papiers local a changé pendant le transfert";

class WriteFormats : public ExportFixture {
protected:
    std::string makeFile(const std::string& name, std::string_view content) const {
        const std::filesystem::path file = platform.scratch / name;
        writeFile(file, content);
        return file.string();
    }

    /// A text and its HTML.
    std::vector<std::string> makeFiles() const {
        return {makeFile("text.txt", "a"), makeFile("text.html", "<b>a</b>")};
    }

    static command::WriteFiles writeFormats(std::vector<std::string> paths,
                                            std::optional<std::uint64_t> expected = std::nullopt) {
        return {7, "formats", std::move(paths), "m", expected};
    }

    void expectUntouched() {
        for (const std::string& call : pasteboard().calls())
            EXPECT_EQ(call.find("replace"), std::string::npos);
        EXPECT_EQ(pasteboard().changeCount(), 41);
    }
};

TEST_F(WriteFormats, writesOneItemWithEveryFormatInTheOrderOfThePathsAndTheMarkerLast) {
    EXPECT_EQ(replyTo(writeFormats(makeFiles())), success(7, 42));
    ASSERT_EQ(pasteboard().items().size(), 1U);
    const PasteboardItem& item = pasteboard().items().front();
    ASSERT_EQ(item.size(), 3U);
    EXPECT_EQ(item[0].type, "public.utf8-plain-text");
    EXPECT_EQ(item[0].data.view(), "a");
    EXPECT_EQ(item[1].type, "public.html");
    EXPECT_EQ(item[1].data.view(), "\xEF\xBB\xBF<b>a</b>"); // marked as UTF-8
    EXPECT_EQ(item[2].type, markerType);
    EXPECT_EQ(item[2].data.view(), "m");
    EXPECT_EQ(polled(), Events());
}

TEST_F(WriteFormats, asksAboutEachFormatBeforeItReplacesAnything) {
    static_cast<void>(replyTo(writeFormats(makeFiles())));
    EXPECT_EQ(pasteboard().calls(),
              (Calls{"canHold public.utf8-plain-text", "canHold public.html", "replaceWithItems"}));
}

TEST_F(WriteFormats, leavesTheContentAloneWhenAFormatIsRefused) {
    pasteboard().copyFromOutside("before");
    pasteboard().refuse(Operation::canHold, "public.html");
    EXPECT_EQ(replyTo(writeFormats(makeFiles())), failure(7, formatRefused, 42));
    EXPECT_EQ(pasteboard().content(pasteboardType::string), "before");
}

TEST_F(WriteFormats, doesNotAskWhetherThePasteboardTakesTheMarker) {
    pasteboard().refuse(Operation::canHold, markerType);
    EXPECT_EQ(replyTo(writeFormats(makeFiles())), success(7, 42));
}

TEST_F(WriteFormats, leavesAPasteboardThatRefusedTheItemForThePollToReport) {
    pasteboard().refuse(Operation::replaceWithItems);
    EXPECT_EQ(replyTo(writeFormats(makeFiles())), failure(7, formatsWriteFailed, 42));
    EXPECT_EQ(polled(), Events{announcement(42)});
}

TEST_F(WriteFormats, refusesFilesThatAreNoFormats) {
    for (const std::string& path : {makeFile("text.htm", "a"), makeFile("document.pdf", "no pdf"),
                                    makeFile("text.rtf", ""), platform.scratch.path().string()}) {
        EXPECT_EQ(replyTo(writeFormats({path})), failure(7, invalidFormats, 41)) << path;
        EXPECT_EQ(replyTo(writeFormats({makeFile("text.txt", "a"), path})), failure(7, invalidFormats, 41));
    }
    expectUntouched();
}

TEST_F(WriteFormats, refusesMoreFilesThanThereAreFormats) {
    EXPECT_EQ(replyTo(writeFormats(std::vector<std::string>(11, makeFile("text.txt", "a")))),
              failure(7, invalidFormats, 41));
}

TEST_F(WriteFormats, comparesTheContentAgainAfterTheFilesWereRead) {
    EXPECT_EQ(replyTo(writeFormats(makeFiles(), 41)), success(7, 42));
    int readings = 0;
    pasteboard().onCountRead([&] {
        if (++readings == 1) // another program copies meanwhile
            pasteboard().copyFromOutside("b");
    });
    EXPECT_EQ(replyTo(writeFormats(makeFiles(), 42)), failure(7, changedDuringTransfer, 43));
    EXPECT_EQ(pasteboard().content(pasteboardType::string), "b");
}

TEST_F(WriteFormats, saysThatTheFilesAreInvalidBeforeItComparesAgain) {
    int readings = 0;
    pasteboard().onCountRead([&] {
        if (++readings == 1)
            pasteboard().copyFromOutside("b");
    });
    EXPECT_EQ(replyTo(writeFormats({makeFile("text.htm", "a")}, 41)), failure(7, invalidFormats, 42));
}

} // namespace
} // namespace tavel
