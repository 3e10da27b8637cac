#pragma once

#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/TestProcess.h"
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

/// The content of a window.
struct Screenshot {
    int width = 0;
    int height = 0;
    std::string pixels; // three bytes per pixel

    /// Whether the pixel differs clearly from the window's top left pixel.
    bool isMarked(int x, int y) const;

    /// The smallest area that contains all marked pixels of `part`.
    Area markedPart(const Area& part) const;
};

/// Controls a program with the real panel, on an X server with a window manager, like a user does. At the end
/// of each test, the program must exit with 0 and have written nothing to standard error.
class PanelTest : public testing::Test {
protected:
    static constexpr const char* title = "Nommer avant de coller";

    void TearDown() override;

    XServer& server() { return server_; }

    /// Starts the window manager, with that many pixels reserved at the edges of the screen. Returns when it
    /// is ready.
    void startWindowManager(int left = 0, int bottom = 0);

    /// Starts the program that has the panel, with additional environment variables. `panelProgram` replaces
    /// tavel-panel.
    void startProgram(const std::map<std::string, std::string>& environment = {},
                      const std::string& panelProgram = "");

    /// Kills the program.
    void killProgram();

    /// The processes of the program's panels, unreaped ones included.
    std::vector<pid_t> panelProcesses();

    /// Waits until there is no such process.
    void awaitNoPanelProcess();

    /// Starts the window manager and the program, and opens a panel with that stem.
    void openPanel(const std::string& stem = "stem");

    /// Shows the panel and waits until its window has the focus.
    void show();

    /// The program's next line.
    std::string next();

    /// The program's next line that is not a logged error of the panel program.
    std::string nextAction();

    /// Sends the command and returns the program's next line, which must be the answer.
    std::string ask(const std::string& command);

    /// Checks that the program's event loop runs and is idle most of the time.
    void expectQuiet();

    /// Runs the shell command with DISPLAY set and returns its output. Fails the test if the command fails.
    std::string run(const std::string& command) const;

    /// Waits for a window with that title and returns its identifier.
    std::string windowTitled(const std::string& wanted) const;
    bool isPanelOnScreen() const;

    /// The window that has the keyboard focus; empty while none has, as between two windows.
    std::string focusedWindow() const;

    /// Waits until the panel has the focus.
    void awaitFocus() const;

    void press(const std::string& keys) const { run("xdotool key " + keys); }
    void type(const std::string& text) const { run("xdotool type " + text); }

    /// Presses Return and checks that the panel confirms this text.
    void expectText(const std::string& text);

    /// The value that xwininfo prints after that name for the panel's window.
    int windowFigure(const std::string& name) const;

    /// The output of xprop for that property of the panel's window.
    std::string windowProperty(const std::string& name) const;

    Screenshot takeScreenshot() const;

    /// The frame of the panel's window: left, right, top, bottom.
    std::vector<int> frameExtents() const;

    std::string errorOutput() const;

    const TestDirectory& directory() const { return directory_; }

private:
    TestDirectory directory_;
    XServer server_;
    std::unique_ptr<TestProcess> windowManager_;
    std::unique_ptr<TestProcess> program_;
};

} // namespace tavel
