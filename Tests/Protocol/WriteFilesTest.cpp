#include "Tests/Protocol/WritingTest.h"

namespace tavel {

namespace {

namespace fs = std::filesystem;

const std::string invalidFiles = "Fichiers clipboard invalides";
const std::string unknownFormat = "Format clipboard inconnu";
const std::string changedDuringTransfer = "Le presse-papiers local a chang\u00E9 pendant le transfert";

class WriteFiles : public WritingTest {
protected:
    using Paths = std::vector<std::string>;

    static Json writeFiles(const Paths& paths, const std::string& marker = "marker") {
        return {{"command", "write_files"}, {"kind", "files"}, {"paths", paths}, {"marker", marker}};
    }

    static Json changed(Json command, const std::string& key, const Json& value) {
        command[key] = value;
        return command;
    }

    static Json without(Json command, const std::string& key) {
        command.erase(key);
        return command;
    }

    /// The item of a file reference.
    static std::vector<TypeAndData> fileItem(const std::string& url, const std::string& marker = "marker") {
        return {{"public.file-url", url}, {std::string(originMarkerType), marker}};
    }

    std::string file(const std::string& name = "file") const { return directory_.createFile(name); }

    /// The URL of the test's directory, whose path needs no escapes.
    std::string directoryUrl() const { return "file://" + directory_.path().string(); }
};

TEST_F(WriteFiles, replacesTheContentByAnItemPerPathWithTheMarkerOnEach) {
    otherApplication().copy({textItem("old"), textItem("older"), textItem("oldest")});
    const Paths paths{file("b"), file("a"), file("b")};
    expectWritten(writeFiles(paths, "from afar"),
                  {fileItem(directoryUrl() + "/b", "from afar"), fileItem(directoryUrl() + "/a", "from afar"),
                   fileItem(directoryUrl() + "/b", "from afar")});
}

TEST_F(WriteFiles, escapesThePathsInTheirUrls) {
    expectWritten(
        writeFiles({file("with space.txt"), file("\u00E9t\u00E9"), file("100%"), file("a%20b"), file("a?b#c"),
                    file("two\nlines"), file("\U0001F600"), file("a\"b\\c"), file("a:b;c[d]")}),
        {fileItem(directoryUrl() + "/with%20space.txt"), fileItem(directoryUrl() + "/%C3%A9t%C3%A9"),
         fileItem(directoryUrl() + "/100%25"), fileItem(directoryUrl() + "/a%2520b"),
         fileItem(directoryUrl() + "/a%3Fb%23c"), fileItem(directoryUrl() + "/two%0Alines"),
         fileItem(directoryUrl() + "/%F0%9F%98%80"), fileItem(directoryUrl() + "/a%22b%5Cc"),
         fileItem(directoryUrl() + "/a:b%3Bc%5Bd%5D")});
}

TEST_F(WriteFiles, endsADirectorysUrlInASlash) {
    file("directory/file");
    const std::string directory = directory_.path() / "directory";
    expectWritten(writeFiles({directory, directory + "/", directory + "/file", "/"}),
                  {fileItem(directoryUrl() + "/directory/"), fileItem(directoryUrl() + "/directory/"),
                   fileItem(directoryUrl() + "/directory/file"), fileItem("file:///")});
}

TEST_F(WriteFiles, takesLinksThatLeadSomewhere) {
    fs::create_symlink(file(), directory_.path() / "link");
    expectWritten(writeFiles({directory_.path() / "link"}), {fileItem(directoryUrl() + "/link")});
}

TEST_F(WriteFiles, refusesToWriteNoPath) {
    otherApplication().copyText("stays");
    expectRefused(writeFiles({}), invalidFiles);
    expectRefused(without(writeFiles({file()}), "paths"), invalidFiles);
}

TEST_F(WriteFiles, takesAListThatHoldsAnythingButStringsForMissing) {
    const std::string path = file();
    for (const Json& wrong : {Json(path), Json(), Json(7), Json(true), Json{{"path", path}}, Json{path, 7},
                              Json{7, path}, Json{path, nullptr}, Json{path, Json::array({path})},
                              Json{Json::array(), path}, Json{path, Json::object()}, Json{path, true, path}})
        expectRefused(changed(writeFiles({path}), "paths", wrong), invalidFiles);
}

TEST_F(WriteFiles, refusesRelativePathsEvenIfTheyExist) {
    for (const std::string path : {".", "..", "", "file", "~", "file:///"})
        expectRefused(writeFiles({path}), invalidFiles);
    expectRefused(writeFiles({directoryUrl() + "/file"}), invalidFiles);
    expectRefused(writeFiles({" " + file()}), invalidFiles);
}

TEST_F(WriteFiles, refusesPathsWhereNothingExists) {
    const std::string path = file();
    fs::create_symlink(directory_.path() / "missing", directory_.path() / "dangling");
    const std::string zero(1, '\0');
    for (const std::string& missing :
         {(directory_.path() / "missing").string(), (directory_.path() / "dangling").string(), path + zero,
          path + zero + "x", "/" + zero, path + "/below", path + " "}) {
        expectRefused(writeFiles({missing}), invalidFiles);
        expectRefused(writeFiles({path, missing}), invalidFiles);
        expectRefused(writeFiles({missing, path}), invalidFiles);
    }
}

TEST_F(WriteFiles, needsAMarkerOfAtMost512Bytes) {
    const std::string path = file();
    expectRefused(without(writeFiles({path}), "marker"), invalidFiles);
    expectRefused(changed(writeFiles({path}), "marker", 7), invalidFiles);
    expectRefused(changed(writeFiles({path}), "marker", Json()), invalidFiles);
    for (const std::string& longest : {std::string(512, 'm'), repeated("\u00E9", 256)}) {
        expectWritten(writeFiles({path}, longest), {fileItem(directoryUrl() + "/file", longest)});
        expectRefused(writeFiles({path}, longest + "m"), invalidFiles);
    }
    expectWritten(writeFiles({path}, ""), {fileItem(directoryUrl() + "/file", "")});
}

TEST_F(WriteFiles, needsAKindThatItKnows) {
    const Json command = writeFiles({file()});
    expectRefused(without(command, "kind"), unknownFormat);
    for (const Json& wrong : {Json("Files"), Json("file"), Json("files "), Json(""), Json("text"), Json(7),
                              Json(true), Json(), Json::array({"files"})})
        expectRefused(changed(command, "kind", wrong), unknownFormat);
}

TEST_F(WriteFiles, comparesTheExpectedSequenceExactly) {
    otherApplication().copyText("one");
    otherApplication().copyText("two");
    const Json command = writeFiles({file()});
    for (const Json& wrong : {Json(1), Json(3), Json(0), Json(-2), Json(18'446'744'073'709'551'615u),
                              Json(1.999), Json(true), Json(false)})
        expectRefused(changed(command, "expected_sequence", wrong), changedDuringTransfer);
    expectWritten(changed(command, "expected_sequence", 2), {fileItem(directoryUrl() + "/file")});
    expectRefused(changed(command, "expected_sequence", 2), changedDuringTransfer);
    expectWritten(changed(command, "expected_sequence", 3.9), {fileItem(directoryUrl() + "/file")});
}

TEST_F(WriteFiles, expectsTheSequenceModulo64Bits) {
    // The empty pasteboard has the change count 0, which 2^64 and false stand for too.
    const std::string path = file();
    const std::string start =
        R"({"command":"write_files","request_id":7,"kind":"files","marker":"","paths":[")" + path + "\"],";
    agent().send(start + "\"expected_sequence\":18446744073709551616}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 1));
    agent().send(start + "\"expected_sequence\":true}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 2));
    agent().send(start + "\"expected_sequence\":-18446744073709551614}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 3));
}

TEST_F(WriteFiles, expectsNoSequenceWhenItIsNoNumber) {
    otherApplication().copyText("old");
    const Json command = writeFiles({file()});
    for (const Json& ignored : {Json("99"), Json(), Json::array({99}), Json::object()})
        expectWritten(changed(command, "expected_sequence", ignored), {fileItem(directoryUrl() + "/file")});
}

TEST_F(WriteFiles, looksAtTheSequenceFirstThenAtTheFilesThenAtTheKind) {
    otherApplication().copyText("old");
    const Json nothing{{"command", "write_files"}};
    expectRefused(changed(nothing, "expected_sequence", 0), changedDuringTransfer);
    expectRefused(changed(writeFiles({"missing"}, std::string(513, 'm')), "expected_sequence", 0),
                  changedDuringTransfer);
    expectRefused(nothing, invalidFiles);
    expectRefused(changed(nothing, "expected_sequence", 1), invalidFiles);
    const std::string path = file();
    expectRefused(changed(writeFiles({path}, std::string(513, 'm')), "kind", "nonsense"), invalidFiles);
    expectRefused(changed(writeFiles({}), "kind", "nonsense"), invalidFiles);
    expectRefused(changed(writeFiles(Paths(10'001, path)), "kind", "nonsense"), invalidFiles);
    expectRefused(changed(writeFiles({path, "/missing/file"}), "kind", "nonsense"), invalidFiles);
    expectRefused(changed(writeFiles({path}), "kind", "nonsense"), unknownFormat);
}

TEST_F(WriteFiles, countsTheLastOfEqualLists) {
    const std::string path = file();
    const std::string start = R"({"command":"write_files","request_id":7,"kind":"files","marker":"",)";
    agent().send(start + R"("paths":7,"paths":["/missing"],"paths":[")" + path + "\"]}\n");
    EXPECT_EQ(agent().nextMessage(), pingReply(7, 1));
    EXPECT_EQ(otherApplication().content(), Content{fileItem(directoryUrl() + "/file", "")});
    for (const std::string last : {"7", "[]", "[7]", "{}", "\"x\"", "null"}) {
        std::string line = start;
        line.append(R"("paths":[")").append(path).append(R"("],"paths":)").append(last).append("}\n");
        agent().send(line);
        EXPECT_EQ(agent().nextMessage().value("reason", ""), invalidFiles) << last;
    }
}

TEST_F(WriteFiles, isNotReportedBack) {
    EXPECT_EQ(request(agent(), writeFiles({file()})), success(1));
    waitForPolls();
    const std::int64_t sequence = otherApplication().copyText("hi");
    EXPECT_EQ(agent().nextMessage(), announcement(sequence));
    EXPECT_EQ(agent().nextMessage(), textEvent("aGk", 2, sequence));
}

TEST_F(WriteFiles, isReportedByOtherAgentsWithItsPathsAndMarker) {
    AgentProcess& other = start();
    file("directory/file");
    const Paths paths{file("with space"), file("\u00E9"), directory_.path() / "directory"};
    EXPECT_EQ(request(agent(), writeFiles(paths, "from afar")), success(1));
    EXPECT_EQ(other.nextMessage(), announcement(1, "from afar"));
    EXPECT_EQ(other.nextMessage(), filesEvent(paths, 1, "from afar"));
}

} // namespace

} // namespace tavel
