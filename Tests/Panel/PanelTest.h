#pragma once

#include "Tests/Store/ChildProcess.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Support/XServer.h"

#include <gmock/gmock.h>
#include <sys/types.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

inline constexpr std::chrono::seconds panelDeadline{30};

/// A part of a window on the screen, in pixels; y grows downwards.
struct Area {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const Area&) const = default;
};

/// What a window shows.
struct Screenshot {
    int width = 0;
    int height = 0;
    std::string pixels; // three bytes each

    /// Whether the pixel differs clearly from the window's top left one.
    bool isMarked(int x, int y) const;

    /// The smallest part of that part which holds all its marked pixels.
    Area markedPart(const Area& part) const;
};

/// A program with the real panel, on an X server with a window manager, played with like a user does. Nothing
/// but what its commands and the panel say may come from it.
class PanelTest : public testing::Test {
protected:
    static constexpr const char* title = "Nommer avant de coller";

    void TearDown() override;

    XServer& server() { return server_; }

    /// Starts the window manager, with that much of the screen reserved at the edges. Returns when it
    /// manages.
    void startWindowManager(int left = 0, int bottom = 0);

    /// Starts the program that has the panel; further variables of its environment. What shows its panels, if
    /// not ours.
    void startProgram(const std::map<std::string, std::string>& environment = {},
                      const std::string& panelProgram = "");

    /// Ends it without a warning.
    void killProgram();

    /// What must not be running any more, or left unreaped: the processes of its panels.
    std::vector<pid_t> panelProcesses();

    /// Waits until there is none of them.
    void awaitNoPanelProcess();

    /// Both, and opens a panel with that stem.
    void openPanel(const std::string& stem = "stem");

    /// Shows it, and waits for its window, which has the focus.
    void show();

    /// The program's next line.
    std::string next();

    /// The program's next line that is not what the panel's process said about errors.
    std::string nextAction();

    /// Sends the command and gives the answer, which has to be the next line.
    std::string ask(const std::string& command);

    /// Checks that the program's loop runs, but waits most of the time.
    void expectQuiet();

    /// What a shell command prints on the display. Fails the test if the command fails.
    std::string run(const std::string& command) const;

    /// Waits until a window with that title is on the screen, and gives its number.
    std::string windowTitled(const std::string& wanted) const;
    bool isPanelOnScreen() const;

    /// The window that has the keyboard focus.
    std::string focusedWindow() const;

    /// Waits until the panel has it.
    void awaitFocus() const;

    void press(const std::string& keys) const { run("xdotool key " + keys); }
    void type(const std::string& text) const { run("xdotool type " + text); }

    /// Confirms with Return what the panel's field holds, and checks that it is this.
    void expectText(const std::string& text);

    /// What xwininfo says behind that name about the panel's window.
    int windowFigure(const std::string& name) const;

    /// What xprop says about that property of the panel's window.
    std::string windowProperty(const std::string& name) const;

    Screenshot takeScreenshot() const;

    /// The frame of the panel's window: left, right, top, bottom.
    std::vector<int> frameExtents() const;

    std::string errorOutput() const;

    const TestDirectory& directory() const { return directory_; }

private:
    TestDirectory directory_;
    XServer server_;
    std::unique_ptr<ChildProcess> windowManager_;
    std::unique_ptr<ChildProcess> program_;
};

} // namespace tavel
