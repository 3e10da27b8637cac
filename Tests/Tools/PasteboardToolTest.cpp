#include "Tests/Tools/RunningTool.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

namespace tavel {

namespace {

using testing::HasSubstr;

/// Runs the program anew for each command: what it copies outlives it.
class PasteboardToolTest : public testing::Test {
protected:
    ToolResult run(std::vector<std::string> arguments, std::string_view input = {}) const {
        arguments.insert(arguments.begin(), TAVEL_PASTEBOARD);
        return runTool(world_, arguments, input);
    }

    /// Expects success; returns the output.
    std::string output(const std::vector<std::string>& arguments, std::string_view input = {}) const {
        const ToolResult result = run(arguments, input);
        EXPECT_EQ(result.status, 0) << result.errors;
        EXPECT_EQ(result.errors, "");
        return result.output;
    }

    /// Expects failure; returns the errors.
    std::string failure(const std::vector<std::string>& arguments, std::string_view input = {}) const {
        const ToolResult result = run(arguments, input);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "");
        return result.errors;
    }

    std::string inWorld(const std::string& name) const { return (world_.directory() / name).string(); }

    World world_;
};

TEST_F(PasteboardToolTest, CopiesStandardInput) {
    EXPECT_EQ(output({"copy"}, "déjà vu\n"), "");
    EXPECT_EQ(output({"paste"}), "déjà vu\n");
    EXPECT_EQ(output({"types"}), "public.utf8-plain-text\n");
}

TEST_F(PasteboardToolTest, CopiesAFile) {
    world_.write("[note]", "from a file");
    output({"copy", "[note]", "--type", "html"});
    EXPECT_EQ(output({"paste", "--type", "public.html"}), "from a file");
    EXPECT_EQ(output({"types"}), "public.html\n");
}

TEST_F(PasteboardToolTest, CopiesAFileAsWhatItsNameSays) {
    world_.write("photo.PNG", allBytes(1000)); // the content is not checked
    output({"copy", "photo.PNG"});
    EXPECT_EQ(output({"types"}), "public.png\n");
    EXPECT_EQ(output({"paste", "--type", "png"}), allBytes(1000));
    world_.write("note.png", "a note");
    output({"copy", "note.png", "--type", "text"});
    EXPECT_EQ(output({"types"}), "public.utf8-plain-text\n");
}

TEST_F(PasteboardToolTest, CopiesEmptyContent) {
    output({"copy"});
    EXPECT_EQ(output({"paste"}), "");
    EXPECT_EQ(output({"types"}), "public.utf8-plain-text\n");
}

TEST_F(PasteboardToolTest, KeepsEveryByte) {
    for (const std::size_t size : {std::size_t{256}, std::size_t{70'000}, std::size_t{6'000'001}}) {
        const std::string content = allBytes(size);
        output({"copy", "--type", "png"}, content);
        EXPECT_TRUE(output({"paste", "--type", "png"}) == content) << size << " bytes";
    }
}

TEST_F(PasteboardToolTest, KeepsZeroBytesInText) {
    const std::string text("a\0b\r\n", 5);
    output({"copy"}, text);
    EXPECT_EQ(output({"paste"}), text);
}

TEST_F(PasteboardToolTest, RefusesTextThatIsNotUtf8) {
    output({"copy"}, "before");
    world_.write("latin1", "caf\xE9");
    EXPECT_EQ(failure({"copy"}, "caf\xE9"), "tavel-pasteboard: standard input is not text in UTF-8\n");
    EXPECT_EQ(failure({"copy", "latin1"}), "tavel-pasteboard: latin1 is not text in UTF-8\n");
    EXPECT_EQ(failure({"set", "html=latin1", "text=latin1"}),
              "tavel-pasteboard: latin1 is not text in UTF-8\n");
    EXPECT_EQ(output({"paste"}), "before");
}

TEST_F(PasteboardToolTest, CopiesFilesWithAbsolutePaths) {
    world_.write("a b.txt", "");
    world_.write("[x,y]", "");
    world_.write("clear", "");
    std::filesystem::create_directory(inWorld("d"));
    output({"copy-files", "a b.txt", "./d/../[x,y]", "clear", "d"});
    EXPECT_EQ(output({"paste-files"}), inWorld("a b.txt") + "\n" + inWorld("[x,y]") + "\n" +
                                           inWorld("clear") + "\n" + inWorld("d") + "\n");
    EXPECT_EQ(output({"types"}), "public.file-url\n");
    EXPECT_EQ(output({"paste", "--type", "file-url"}),
              "file://" + world_.directory().string() + "/a%20b.txt");
}

TEST_F(PasteboardToolTest, RefusesFilesThatAreNotThere) {
    output({"copy"}, "before");
    world_.write("there", "");
    EXPECT_EQ(failure({"copy-files", "there", "not there"}),
              "tavel-pasteboard: not there: no such file or directory\n");
    EXPECT_EQ(run({"copy-files", ""}).status, 1);
    EXPECT_EQ(output({"paste"}), "before");
}

TEST_F(PasteboardToolTest, RefusesPathsThatNobodyCouldRead) {
    world_.write("caf\xE9", "");
    EXPECT_THAT(failure({"copy-files", "caf\xE9"}), HasSubstr("not in UTF-8"));
}

TEST_F(PasteboardToolTest, SetsSeveralTypesOfOneThing) {
    world_.write("note.html", "<b>hi</b>");
    output({"set", "html=note.html", "text=-", "com.example.own=note.html"}, "hi");
    EXPECT_EQ(output({"types"}), "public.html\npublic.utf8-plain-text\ncom.example.own\n");
    EXPECT_EQ(output({"paste"}), "hi");
    EXPECT_EQ(output({"paste", "--type", "html"}), "<b>hi</b>");
    EXPECT_EQ(output({"paste", "--type", "com.example.own"}), "<b>hi</b>");
}

TEST_F(PasteboardToolTest, SetsEveryFormat) {
    const std::vector<std::string> names{"pdf",  "gif", "svg", "webp", "tiff",
                                         "jpeg", "png", "rtf", "html", "text"};
    std::vector<std::string> arguments{"set"};
    for (const std::string& name : names) {
        const std::string file = world_.write("file of " + name, name == "text" ? "text" : name + "\xFF");
        arguments.push_back(std::string(name).append("=").append(file));
    }
    output(arguments);
    EXPECT_EQ(output({"types"}),
              "com.adobe.pdf\ncom.compuserve.gif\npublic.svg-image\norg.webmproject.webp\npublic.tiff\n"
              "public.jpeg\npublic.png\npublic.rtf\npublic.html\npublic.utf8-plain-text\n");
    for (const std::string& name : names)
        EXPECT_EQ(output({"paste", "--type", name}), name == "text" ? "text" : name + "\xFF");
}

/// Runs the program on a terminal.
class PasteboardTerminalTest : public PasteboardToolTest {
protected:
    ToolResult runOnTerminal(std::vector<std::string> arguments) const {
        arguments.insert(arguments.begin(), TAVEL_PASTEBOARD);
        return RunningTool(world_, arguments, RunningTool::Place::terminal).finish();
    }
};

TEST_F(PasteboardTerminalTest, KeepsBinaryDataFromTheTerminal) {
    for (const std::string_view content : {std::string_view("a\0b", 3), std::string_view("caf\xE9")}) {
        output({"copy", "--type", "png"}, content);
        const ToolResult result = runOnTerminal({"paste", "--type", "png"});
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.output, "tavel-pasteboard: what is on the pasteboard is not text, and a terminal "
                                 "could take it for orders; send it to a file, or use --force\r\n");
    }
}

TEST_F(PasteboardTerminalTest, WritesBinaryDataToTheTerminalByForce) {
    output({"copy", "--type", "png"}, "caf\xE9");
    const ToolResult result = runOnTerminal({"paste", "--type", "png", "--force"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "caf\xE9");
}

TEST_F(PasteboardTerminalTest, WritesTextOfAnyTypeToTheTerminal) {
    output({"copy", "--type", "html"}, "<p>déjà vu");
    const ToolResult result = runOnTerminal({"paste", "--type", "html"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.output, "<p>déjà vu");
}

TEST_F(PasteboardToolTest, NamesTheFileThatItCannotRead) {
    std::filesystem::create_directory(inWorld("d"));
    EXPECT_EQ(failure({"copy", "gone"}), "tavel-pasteboard: gone: No such file or directory\n");
    EXPECT_EQ(failure({"copy", "d"}), "tavel-pasteboard: d: Is a directory\n");
    EXPECT_EQ(failure({"set", "text=gone"}), "tavel-pasteboard: gone: No such file or directory\n");
}

TEST_F(PasteboardToolTest, FailsToPasteWhatIsNotThere) {
    EXPECT_EQ(failure({"paste"}),
              "tavel-pasteboard: there is nothing of the type public.utf8-plain-text on the pasteboard\n");
    EXPECT_EQ(failure({"paste-files"}), "tavel-pasteboard: there are no files on the pasteboard\n");
    output({"copy"}, "text");
    EXPECT_EQ(failure({"paste", "--type", "pdf"}),
              "tavel-pasteboard: there is nothing of the type com.adobe.pdf on the pasteboard\n");
}

TEST_F(PasteboardToolTest, MovesTheCountByOneForEachContent) {
    EXPECT_EQ(output({"count"}), "0\n");
    output({"copy"}, "a");
    EXPECT_EQ(output({"count"}), "1\n");
    world_.write("f", "");
    output({"copy-files", "f", "f"});
    EXPECT_EQ(output({"count"}), "2\n");
    output({"clear"});
    EXPECT_EQ(output({"count"}), "3\n");
    failure({"copy", "gone"});
    EXPECT_EQ(output({"count"}), "3\n");
}

TEST_F(PasteboardToolTest, ClearsThePasteboard) {
    output({"copy"}, "a");
    output({"clear"});
    EXPECT_EQ(output({"types"}), "");
    EXPECT_EQ(run({"paste"}).status, 1);
}

TEST_F(PasteboardToolTest, KeepsNamedPasteboardsApart) {
    output({"copy"}, "general");
    output({"--pasteboard", "one", "copy"}, "first");
    output({"copy", "--pasteboard", "two"}, "second");
    EXPECT_EQ(output({"paste"}), "general");
    EXPECT_EQ(output({"paste", "--pasteboard", "one"}), "first");
    EXPECT_EQ(output({"--pasteboard", "two", "paste"}), "second");
}

TEST_F(PasteboardToolTest, TellsUsageMistakesWithStatus2) {
    for (const std::vector<std::string>& arguments :
         std::vector<std::vector<std::string>>{{},
                                               {"bogus"},
                                               {"copy-files"},
                                               {"set", "text"},
                                               {"count", "x"},
                                               {"paste", "--type"},
                                               {"--pasteboard"}}) {
        const ToolResult result = run(arguments);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.output, "");
        EXPECT_THAT(result.errors, testing::StartsWith("tavel-pasteboard: "));
        EXPECT_THAT(result.errors, HasSubstr("--help"));
    }
}

TEST_F(PasteboardToolTest, HelpsOnStandardOutput) {
    const std::string help = output({"--help"});
    for (const char* const word : {"copy-files", "paste-files", "--pasteboard", "public.svg-image"})
        EXPECT_THAT(help, HasSubstr(word));
    EXPECT_THAT(output({"copy", "--help"}), HasSubstr("--type"));
}

TEST_F(PasteboardToolTest, PrintsItsVersion) {
    EXPECT_EQ(output({"--version"}), "tavel-pasteboard " TAVEL_VERSION "\n");
}

TEST_F(PasteboardToolTest, NoticesThatItCannotWrite) {
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "this system has no /dev/full";
    output({"copy"}, "a");
    const std::string script =
        world_.writeScript("full", std::string("exec '") + TAVEL_PASTEBOARD + "' paste > /dev/full\n");
    const ToolResult result = runTool(world_, {script});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-pasteboard: standard output: No space left on device\n");
}

TEST_F(PasteboardToolTest, TellsWhyThePasteboardCannotBeOpened) {
    world_.setVariable("XDG_RUNTIME_DIR", "");
    const std::string file = world_.write("tavel-pasteboard-" + std::to_string(geteuid()), "no directory");
    world_.setVariable("TMPDIR", std::filesystem::path(file).parent_path());
    EXPECT_THAT(failure({"count"}), HasSubstr(file));
    EXPECT_THAT(failure({"copy"}, "a"), HasSubstr("is not a directory"));
}

TEST_F(PasteboardToolTest, WorksWithClosedStandardDescriptors) {
    output({"copy"}, "before");
    const std::string script =
        world_.writeScript("closed", std::string("'") + TAVEL_PASTEBOARD + "' copy <&- >&- 2>&-\nexec '" +
                                         TAVEL_PASTEBOARD + "' types\n");
    EXPECT_EQ(runTool(world_, {script}).output, "public.utf8-plain-text\n");
    EXPECT_EQ(output({"paste"}), ""); // a closed input counts as empty
}

} // namespace

} // namespace tavel
