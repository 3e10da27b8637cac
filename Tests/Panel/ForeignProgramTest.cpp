#include "Tests/Panel/PanelTest.h"

#include <filesystem>

namespace tavel {

namespace {

using testing::HasSubstr;
using testing::Not;

constexpr const char* refusal = "log The naming panel cannot be shown: ";

/// Runs misbehaving programs in place of tavel-panel.
class PanelForeignProgram : public PanelTest {
protected:
    /// Starts the program, with a shell script in place of tavel-panel.
    void startWithScript(const std::string& script) {
        const auto file = directory().createFile("script", "#!/bin/sh\n" + script);
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        startProgram({}, file.string());
    }

    /// Expects that the script's panel does not become ready, for that reason.
    void expectRefusal(const std::string& reason) {
        EXPECT_EQ(ask("open stem"), refusal + reason);
        EXPECT_EQ(next(), "no view");
        awaitNoPanelProcess();
    }

    /// Expects that the script's panel becomes ready and reports a cancel once it is shown.
    void expectCancel() {
        EXPECT_EQ(ask("open stem"), "done");
        EXPECT_EQ(ask("show"), "done");
        EXPECT_EQ(nextAction(), "cancel");
        awaitNoPanelProcess();
        EXPECT_EQ(ask("text"), "stem") << "and no action before this answer";
    }
};

constexpr const char* ready = "echo ready 1 2 410 170 0 0 1280 800 0 0 1280 770\n";

TEST_F(PanelForeignProgram, thatIsMissingIsNoPanel) {
    const std::string missing = (directory().path() / "missing").string();
    startProgram({}, missing);
    expectRefusal(missing + ": No such file or directory");
}

TEST_F(PanelForeignProgram, thatARelativePathNamesIsNoPanel) {
    const auto file = directory().createFile("script", std::string("#!/bin/sh\n") + ready);
    std::filesystem::permissions(file, std::filesystem::perms::owner_all);
    const std::string relative = std::filesystem::relative(file);
    startProgram({}, relative);
    expectRefusal(relative + ": not an absolute path (is there no /proc?)");
}

TEST_F(PanelForeignProgram, thatEndsAtOnceIsNoPanel) {
    startWithScript("exit 3\n");
    expectRefusal("its program ended or said too much");
}

TEST_F(PanelForeignProgram, thatIsNeverReadyIsNoPanel) {
    startWithScript("exec sleep 1000\n");
    expectRefusal("its program did not get ready in time");
}

TEST_F(PanelForeignProgram, thatSaysSomethingElseIsNoPanel) {
    startWithScript("echo hello; exec sleep 1000\n");
    expectRefusal("its program says something else than that it is ready");
}

TEST_F(PanelForeignProgram, thatSaysALineWithoutEndIsNoPanel) {
    startWithScript("exec cat /dev/zero\n");
    expectRefusal("its program ended or said too much");
}

TEST_F(PanelForeignProgram, tellsTheSurroundings) {
    startWithScript(std::string(ready) + "exec sleep 1000\n");
    EXPECT_EQ(ask("open stem"), "done");
    EXPECT_EQ(ask("surroundings"), "pointer 1 2 | 0 0 1280 800 | 0 0 1280 770 | window 410 170");
}

TEST_F(PanelForeignProgram, mayShutItsErrorOutput) {
    startWithScript("exec 2>&-\nsleep 0.5\n" + std::string(ready) + "exec sleep 1000\n");
    const long long before = std::stoll(ask("processor-time"));
    EXPECT_EQ(ask("open stem"), "done");
    EXPECT_EQ(ask("show"), "done");
    expectQuiet();
    EXPECT_LT(std::stoll(ask("processor-time")) - before, 200'000);
}

TEST_F(PanelForeignProgram, thatIsReadyTwiceIsACancel) {
    startWithScript(std::string(ready) + ready + "exec sleep 1000\n");
    expectCancel();
}

TEST_F(PanelForeignProgram, thatEndsIsACancel) {
    startWithScript(std::string(ready) + "exit 0\n");
    expectCancel();
}

TEST_F(PanelForeignProgram, thatSaysGarbageIsACancel) {
    startWithScript(std::string(ready) + "echo confirm; exec sleep 1000\n");
    expectCancel();
}

TEST_F(PanelForeignProgram, thatSaysALineWithoutEndIsACancel) {
    startWithScript(std::string(ready) + "exec cat /dev/zero\n");
    expectCancel();
}

TEST_F(PanelForeignProgram, thatSaysGarbageWithoutEndIsACancel) {
    startWithScript(std::string(ready) + "exec yes\n");
    expectCancel();
}

TEST_F(PanelForeignProgram, isNotListenedToWhileThePanelIsHidden) {
    startWithScript(std::string(ready) + "echo cancel; echo confirm; exec sleep 1000\n");
    EXPECT_EQ(ask("open stem"), "done");
    EXPECT_EQ(ask("text"), "stem") << "and no action before this answer";
    EXPECT_EQ(ask("show-and-hide"), "done");
    EXPECT_EQ(ask("text"), "stem") << "nor before this one";
    awaitNoPanelProcess();
}

TEST_F(PanelForeignProgram, isNotListenedToAnyMoreWhenThePanelIsDestroyed) {
    startWithScript(std::string(ready) + "echo cancel; echo cancel; exec sleep 1000\n");
    EXPECT_EQ(ask("destroy-with cancel"), "done");
    EXPECT_EQ(ask("open stem"), "done");
    EXPECT_EQ(ask("show"), "done");
    EXPECT_EQ(next(), "cancel");
    EXPECT_EQ(ask("text"), "no view") << "and no action before this answer";
    awaitNoPanelProcess();
}

TEST_F(PanelForeignProgram, doesNotFillTheLog) {
    startWithScript("head -c 50000 /dev/zero | tr '\\0' '\\n' >&2\n"
                    "yes complaint | head -n 20000 >&2\n" +
                    std::string(ready) + "exec sleep 1000\n");
    int complaints = 0;
    std::string line = ask("open stem");
    for (; line == "log tavel-panel: complaint"; line = next())
        ++complaints;
    EXPECT_EQ(line, "done");
    EXPECT_GT(complaints, 1000);
    EXPECT_LT(complaints, 10000);
}

TEST_F(PanelForeignProgram, inheritsThreeDescriptors) {
    startWithScript("ls -l /proc/self/fd >&2\nexit 1\n");
    const auto file = directory().createFile("of-the-program");
    EXPECT_EQ(ask("open-file " + file.string()), "done");
    int sockets = 0;
    std::string line = ask("open stem");
    for (; line.starts_with("log tavel-panel: "); line = next()) {
        EXPECT_THAT(line, Not(HasSubstr("of-the-program")));
        sockets += line.find("socket:") == std::string::npos ? 0 : 1;
    }
    EXPECT_EQ(sockets, 3);
    EXPECT_EQ(line, refusal + std::string("its program ended or said too much"));
    EXPECT_EQ(next(), "no view");
}

} // namespace

} // namespace tavel
