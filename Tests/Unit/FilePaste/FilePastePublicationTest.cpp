#include "Support/FileUrl.h"
#include "Support/Uuid.h"
#include "Tests/Support/Permissions.h"
#include "Tests/Support/ReadingLimits.h"
#include "Tests/Unit/FilePaste/FilePasteFixture.h"
#include "Tests/Unit/Fixtures/ForkedFunction.h"
#include "Tests/Unit/Fixtures/Random.h"
#include "Tests/Unit/Support/WritingPrivateFile.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <ios>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace tavel {
namespace {

// The generated file on the disk and on the pasteboard.

namespace fs = std::filesystem;

class FilePastePublication : public FilePasteFixture {
protected:
    std::optional<fs::path> publish(const std::string& name, std::string_view content = "Bonjour") {
        return paste->publishGeneratedFile(pasteboard().changeCount(), Bytes::copyOf(content), name);
    }

    /// Nothing was written to the disk, and the pasteboard is unchanged.
    void expectNothing(std::string_view why) {
        EXPECT_EQ(directoryCount(), 0U) << why;
        EXPECT_TRUE(changes.empty()) << why;
        EXPECT_FALSE(pasteboard().content("public.file-url")) << why;
        EXPECT_FALSE(pasteboard().content("com.brennic.generated-file")) << why;
        EXPECT_EQ(pasteboard().content("public.utf8-plain-text"), "Bonjour") << why;
    }

    /// Runs `action` at the read number `reads` of the change count, counted from now.
    void afterReads(int reads, std::function<void()> action) {
        pasteboard().onCountRead([reads, action = std::move(action)]() mutable {
            if (--reads == 0)
                action();
        });
    }
};

TEST_F(FilePastePublication, writesTheFileIntoADirectoryOfItsOwn) {
    const auto file = publish("a.txt");
    ASSERT_TRUE(file);
    EXPECT_EQ(file->filename(), "a.txt");
    EXPECT_EQ(file->parent_path().parent_path(), root);
    const std::string directory = file->parent_path().filename().string();
    ASSERT_TRUE(directory.starts_with("paste-"));
    EXPECT_TRUE(isUuid(std::string_view(directory).substr(6))) << directory;
    EXPECT_EQ(countEntries(file->parent_path()), 1);
}

TEST_F(FilePastePublication, writesTheBytesAsTheyAre) {
    Random random(1);
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{1'000'000}}) {
        const std::string content = random.bytes(size);
        const auto file = publish("a.gif", content);
        ASSERT_TRUE(file);
        EXPECT_TRUE(readBack(*file) == content) << size;
    }
}

TEST_F(FilePastePublication, isPrivateToTheUserUnderAnyUmask) {
    for (const mode_t mask : {0000U, 0022U, 0077U, 0277U}) {
        fs::create_directory(root);
        const UmaskDuringTest changed(mask);
        const auto file = publish("a.txt");
        ASSERT_TRUE(file);
        EXPECT_EQ(modeOf(*file), 0600U) << std::oct << mask;
        EXPECT_EQ(modeOf(file->parent_path()), 0700U) << std::oct << mask;
    }
}

TEST_F(FilePastePublication, makesTheRootWhenItIsMissing) {
    EXPECT_FALSE(fs::exists(root));
    ASSERT_TRUE(publish("a.txt"));
    fs::remove_all(root);
    EXPECT_TRUE(publish("a.txt"));
}

TEST_F(FilePastePublication, addsTheFileToTheContent) {
    copy({representation("public.png", "picture"), representation("public.utf8-plain-text", "text")});
    const auto file = publish("Été 1.txt");
    ASSERT_TRUE(file);
    EXPECT_EQ(pasteboard().content("public.png"), "picture");
    EXPECT_EQ(pasteboard().content("public.utf8-plain-text"), "text");
    EXPECT_EQ(pasteboard().content("public.file-url"),
              "file://" + file->parent_path().string() + "/%C3%89t%C3%A9%201.txt#platform");
    EXPECT_EQ(pasteboard().content("com.brennic.generated-file"), "1");
    EXPECT_EQ(pasteboard().files(everyFile).paths, std::vector{file->string()});
    ASSERT_EQ(pasteboard().items().size(), 1U);
    EXPECT_EQ(pasteboard().items().front().size(), 4U) << "and nothing else";
}

TEST_F(FilePastePublication, addsBothTypesInOneChange) {
    const std::int64_t before = pasteboard().changeCount();
    pasteboard().forgetCalls();
    ASSERT_TRUE(publish("a.txt"));
    EXPECT_EQ(pasteboard().calls(), std::vector<std::string>{"addTypes"});
    EXPECT_EQ(pasteboard().changeCount(), before + 1);
}

TEST_F(FilePastePublication, reportsTheNewChangeCountOnce) {
    const std::int64_t before = pasteboard().changeCount();
    ASSERT_TRUE(publish("a.txt"));
    EXPECT_EQ(changes, std::vector{before + 1});
    ASSERT_TRUE(publish("b.txt"));
    EXPECT_EQ(changes, (std::vector{before + 1, before + 2}));
}

TEST_F(FilePastePublication, reportsItsOwnChangeAndNotACopyThatFollowsAtOnce) {
    const std::int64_t before = pasteboard().changeCount();
    pasteboard().onWritten([this] { pasteboard().copyFromOutside("copied since"); });
    ASSERT_TRUE(publish("a.txt"));
    EXPECT_EQ(changes, std::vector{before + 1});
    EXPECT_EQ(pasteboard().changeCount(), before + 2);
}

TEST_F(FilePastePublication, reportsTheNewChangeCountAfterTheFileIsThere) {
    int told = 0;
    paste = std::make_shared<FilePaste>(
        platform, platform.pasteboard, std::make_shared<ExportDirectory>(root), [&](std::int64_t) {
            ++told;
            ASSERT_EQ(files().size(), 1U);
            EXPECT_EQ(readBack(files().front()), "Bonjour");
            EXPECT_EQ(pasteboard().content("com.brennic.generated-file"), "1");
        });
    ASSERT_TRUE(publish("a.txt"));
    EXPECT_EQ(told, 1);
}

TEST_F(FilePastePublication, reportsTheNewChangeCountAfterTheOldestFileIsGone) {
    std::vector<std::size_t> directories;
    paste =
        std::make_shared<FilePaste>(platform, platform.pasteboard, std::make_shared<ExportDirectory>(root),
                                    [&](std::int64_t) { directories.push_back(directoryCount()); });
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(publish("a.txt"));
    EXPECT_EQ(directories, (std::vector<std::size_t>{1, 2, 2}));
}

TEST_F(FilePastePublication, writesTheFileBeforeItTouchesThePasteboard) {
    afterReads(3, [this] { // the three reads: in publish(), before writing, after writing
        EXPECT_EQ(files().size(), 1U);
        EXPECT_FALSE(pasteboard().content("public.file-url"));
    });
    EXPECT_TRUE(publish("a.txt"));
    pasteboard().onCountRead(nullptr);
}

TEST_F(FilePastePublication, doesNothingWhenTheContentHasAlreadyChanged) {
    const std::int64_t count = pasteboard().changeCount();
    for (const std::int64_t other : {count - 1, count + 1, std::int64_t{0}})
        EXPECT_FALSE(paste->publishGeneratedFile(other, Bytes::copyOf("a"), "a.txt"));
    EXPECT_FALSE(fs::exists(root)) << "nothing was even begun";
    expectNothing("");
}

TEST_F(FilePastePublication, doesNothingWhenTheContentChangesDuringWriting) {
    const std::int64_t count = pasteboard().changeCount();
    afterReads(1, [&] { pasteboard().setChangeCount(count + 1); });
    EXPECT_FALSE(paste->publishGeneratedFile(count, Bytes::copyOf("a"), "a.txt"));
    EXPECT_TRUE(fs::exists(root)) << "it was written";
    expectNothing("and removed");
}

TEST_F(FilePastePublication, leavesNothingWhenThePasteboardRefuses) {
    for (const std::string_view type : {ScriptedPasteboard::anyType, std::string_view("public.file-url"),
                                        std::string_view("com.brennic.generated-file")}) {
        pasteboard().refuse(ScriptedPasteboard::Operation::addTypes, type);
        EXPECT_EQ(errorOf([this] { publish("a.txt"); }), "Tavel 2");
        expectNothing(type);
        pasteboard().refuseNothing();
    }
    EXPECT_TRUE(publish("a.txt"));
}

TEST_F(FilePastePublication, takesOnlyNamesThatThePanelCouldHaveGiven) {
    for (const std::string_view name :
         {"a.exe",  "CON.txt", "a",          ".txt",       "a/b.txt",  " a.txt",   "a .txt",
          "a..txt", "",        ".",          "..",         "../a.txt", "a.TXT",    "a.txt ",
          "a.txt.", "a.jpeg",  "lpt1.x.pdf", "/tmp/a.txt", "a\n.txt",  "a\xFF.txt"}) {
        EXPECT_EQ(errorOf([&] { publish(std::string(name)); }), "Tavel 5") << name;
        EXPECT_FALSE(fs::exists(root)) << name;
    }
    EXPECT_EQ(errorOf([&] { publish(std::string("a\0.txt", 6)); }), "Tavel 5");
    expectNothing("");
    for (const std::string_view name : {"a.txt", ".a.txt", "a.b.pdf", "photo.png.txt"})
        EXPECT_TRUE(publish(std::string(name))) << name;
}

TEST_F(FilePastePublication, checksTheChangeCountBeforeTheName) {
    EXPECT_FALSE(paste->publishGeneratedFile(0, Bytes(), "CON.txt"));
}

TEST_F(FilePastePublication, keepsTheLastTwoFiles) {
    std::vector<fs::path> published;
    for (const std::string_view name : {"a.txt", "b.txt", "c.txt", "d.txt", "e.txt"}) {
        published.push_back(publish(std::string(name)).value());
        const std::size_t count = published.size();
        EXPECT_EQ(directoryCount(), std::min<std::size_t>(count, 2));
        for (std::size_t i = 0; i < count; ++i)
            EXPECT_EQ(fs::exists(published[i]), i + 2 >= count) << name << ' ' << i;
    }
}

TEST_F(FilePastePublication, keepsTheLastTwoFilesWhenALaterOneFails) {
    const fs::path first = publish("a.txt").value();
    const fs::path second = publish("b.txt").value();
    pasteboard().refuse(ScriptedPasteboard::Operation::addTypes);
    EXPECT_EQ(errorOf([this] { publish("c.txt"); }), "Tavel 2");
    EXPECT_TRUE(fs::exists(first));
    EXPECT_TRUE(fs::exists(second));
    EXPECT_EQ(directoryCount(), 2U);
}

TEST_F(FilePastePublication, keepsOtherEntriesOfTheRoot) {
    fs::create_directories(root / "paste-other");
    for (int i = 0; i < 4; ++i)
        ASSERT_TRUE(publish("a.txt"));
    EXPECT_TRUE(fs::exists(root / "paste-other"));
    EXPECT_EQ(directoryCount(), 3U);
}

TEST_F(FilePastePublication, replacesTheFormerFileOfTheSameContent) {
    const fs::path first = publish("a.txt").value();
    const fs::path second = publish("a.txt").value();
    EXPECT_NE(first, second);
    EXPECT_EQ(pasteboard().files(everyFile).paths, std::vector{second.string()});
    EXPECT_EQ(pasteboard().content("public.utf8-plain-text"), "Bonjour");
}

} // namespace
} // namespace tavel
