#include "Tests/Panel/PanelTest.h"

#include <csignal>
#include <fstream>

namespace tavel {

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* refusal = "log The naming panel cannot be shown: ";

class PanelProcess : public PanelTest {
protected:
    pid_t panelProcess() {
        const auto processes = panelProcesses();
        if (processes.size() != 1)
            throw std::runtime_error("There is not one panel process.");
        return processes.front();
    }

    /// The letter of the process's state (proc(5)); X if there is no such process.
    static char stateOf(pid_t process) {
        std::ifstream status("/proc/" + std::to_string(process) + "/stat");
        std::string number;
        std::string name;
        char state = 'X';
        status >> number >> name >> state;
        return state;
    }

    static void awaitEnd(pid_t process) {
        waitUntil([&] { return stateOf(process) == 'Z' || stateOf(process) == 'X'; }, panelDeadline);
    }

    static void stop(pid_t process) {
        kill(process, SIGSTOP);
        waitUntil([&] { return stateOf(process) == 'T'; }, panelDeadline);
    }

    /// Expects that the end of the panel causes exactly one cancel, and that no process or work remains.
    void expectEndWithCancel() {
        EXPECT_EQ(nextAction(), "cancel");
        awaitNoPanelProcess();
        expectQuiet();
        EXPECT_EQ(ask("text"), "stem") << "and no action before this answer";
        for (const char* const command : {"show", "hint No.", "origin 1 2", "hide"})
            EXPECT_EQ(ask(command), "done");
    }
};

TEST_F(PanelProcess, withoutADisplayHasNoPanelAndSaysWhy) {
    startProgram({{"DISPLAY", ""}});
    for (int time = 0; time < 2; ++time) {
        EXPECT_EQ(ask("open stem"), "log tavel-panel: No X server can be reached.");
        EXPECT_EQ(next(), refusal + std::string("its program ended or said too much"));
        EXPECT_EQ(next(), "no view");
        awaitNoPanelProcess();
    }
}

TEST_F(PanelProcess, leavesTheProgramsLocaleAlone) {
    startWindowManager();
    startProgram({{"LC_ALL", "C.UTF-8"}});
    EXPECT_EQ(ask("open stem"), "done");
    show();
    EXPECT_EQ(ask("locale"), "C C C");
}

TEST_F(PanelProcess, logsWhatLibrariesSayAndPrintsNothing) {
    startWindowManager();
    // GTK warns about a missing module.
    startProgram({{"GTK_MODULES", "tavel-missing"}});
    EXPECT_THAT(ask("open stem"),
                AllOf(StartsWith("log tavel-panel: Gtk-Message: "), HasSubstr("tavel-missing")));
    EXPECT_EQ(next(), "done");
    show();
    press("Escape");
    EXPECT_EQ(next(), "cancel");
}

TEST_F(PanelProcess, understandsThePanelAlsoWhenLibrariesPrint) {
    // Standard output gets GLib's debug messages and what fontconfig looks for. The log gets neither.
    startProgram({{"G_MESSAGES_DEBUG", "all"}, {"FC_DEBUG", "1"}});
    EXPECT_EQ(ask("open stem"), "done");
}

TEST_F(PanelProcess, ownsNoClipboard) {
    openPanel();
    show();
    type("name");
    press("ctrl+a");
    expectText("name");
    EXPECT_EQ(ask("hide"), "done");
    EXPECT_EQ(ask("destroy"), "done");
    EXPECT_EQ(run("xclip -selection clipboard -o -t TARGETS 2>&1 || true"),
              "Error: target TARGETS not available\n");
}

TEST_F(PanelProcess, endsWhenThePanelIsHidden) {
    openPanel();
    show();
    EXPECT_THAT(panelProcesses(), SizeIs(1));
    EXPECT_EQ(ask("hide"), "done");
    waitUntil([&] { return !isPanelOnScreen(); }, panelDeadline);
    awaitNoPanelProcess();
    expectQuiet();
    EXPECT_EQ(ask("text"), "stem");
}

TEST_F(PanelProcess, endsWhenThePanelIsDestroyed) {
    openPanel();
    EXPECT_THAT(panelProcesses(), SizeIs(1));
    EXPECT_EQ(ask("destroy"), "done");
    awaitNoPanelProcess();
}

TEST_F(PanelProcess, endsWithTheProgram) {
    openPanel();
    show();
    const pid_t panel = panelProcess();
    killProgram();
    awaitEnd(panel);
    // The server removes the window when it notices the end of the process.
    waitUntil([&] { return !isPanelOnScreen(); }, panelDeadline);
}

TEST_F(PanelProcess, isACancelWhenItIsKilled) {
    openPanel();
    show();
    kill(panelProcess(), SIGKILL);
    expectEndWithCancel();
}

TEST_F(PanelProcess, isACancelWhenTheServerIsLost) {
    openPanel();
    show();
    server().stop();
    expectEndWithCancel();
}

TEST_F(PanelProcess, isACancelOnlyOnceThePanelIsShown) {
    openPanel();
    const pid_t panel = panelProcess();
    server().stop();
    awaitEnd(panel);
    expectQuiet();
    EXPECT_EQ(ask("hint No."), "done");
    EXPECT_EQ(ask("origin 1 2"), "done");
    EXPECT_EQ(ask("show"), "done");
    expectEndWithCancel();
}

TEST_F(PanelProcess, mayBeDestroyedInTheCancelThatIsItsEnd) {
    openPanel();
    show();
    EXPECT_EQ(ask("destroy-with cancel"), "done");
    kill(panelProcess(), SIGKILL);
    EXPECT_EQ(nextAction(), "cancel");
    EXPECT_EQ(ask("text"), "no view");
    awaitNoPanelProcess();
    expectQuiet();
}

/// The commands that take a panel from the screen.
class PanelProcessStopped : public PanelProcess, public testing::WithParamInterface<const char*> {};

TEST_P(PanelProcessStopped, holdsNobodyUp) {
    openPanel();
    show();
    const pid_t panel = panelProcess();
    stop(panel);
    EXPECT_EQ(ask("hint No."), "done");
    EXPECT_EQ(ask(GetParam()), "done");
    awaitNoPanelProcess();
    EXPECT_EQ(stateOf(panel), 'X');
    waitUntil([&] { return !isPanelOnScreen(); }, panelDeadline);
}

INSTANTIATE_TEST_SUITE_P(Command, PanelProcessStopped, testing::Values("hide", "destroy"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(PanelProcess, isACancelWhenItReadsNothingForTooLong) {
    openPanel();
    show();
    stop(panelProcess());
    const std::string hint = "hint " + std::string(4000, 'x');
    std::string answer = "done";
    for (int time = 0; time < 1000 && answer == "done"; ++time)
        answer = ask(hint);
    EXPECT_EQ(answer, "cancel");
    EXPECT_EQ(next(), "done") << "to the last hint";
    awaitNoPanelProcess();
}

} // namespace

} // namespace tavel
