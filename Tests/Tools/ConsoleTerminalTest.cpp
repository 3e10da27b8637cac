#include "Tests/Tools/RunningTool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr const char* eraseLine = "\r\x1b[J";
constexpr const char* controlA = "\x01"; // to the beginning of the line
constexpr const char* controlC = "\x03";
constexpr const char* controlD = "\x04"; // the end of input, on an empty line
constexpr const char* controlE = "\x05"; // to the end of the line
constexpr const char* backspace = "\x7f";
constexpr const char* upArrow = "\x1b[A";
constexpr const char* returnKey = "\r";

/// The console on a terminal of 40 columns.
class ConsoleTerminalTest : public testing::Test {
protected:
    ConsoleTerminalTest() : console_(world_, {TAVEL_CONSOLE}, RunningTool::Place::terminal) {
        console_.waitForOutput("tavel> ");
    }

    void press(std::string_view keys) { console_.send(keys); }

    /// Waits for the echo: until then the program may not have read the keys.
    void type(const std::string& text) {
        console_.send(text);
        console_.waitForOutput(text);
    }

    /// Waits until the agent runs: it does not report what was on the pasteboard before. Uses request 1.
    void awaitAgent() {
        press(std::string("ping") + returnKey);
        console_.waitForOutput("[1] ping: done (#0)");
        console_.waitForOutput("tavel> ");
    }

    std::string pasteboard(std::vector<std::string> arguments, std::string_view input = {}) const {
        arguments.insert(arguments.begin(), TAVEL_PASTEBOARD);
        return runTool(world_, arguments, input).output;
    }

    World world_;
    RunningTool console_;
};

TEST_F(ConsoleTerminalTest, EditsTheLine) {
    type("text onjoux");
    press(std::string(backspace) + "r" + controlA + "\x1b[C\x1b[C\x1b[C\x1b[C\x1b[C" + "B" + controlE +
          " à tous ☕" + returnKey);
    console_.waitForOutput("[1] text: done (#1)");
    EXPECT_EQ(pasteboard({"paste"}), "Bonjour à tous ☕");
}

TEST_F(ConsoleTerminalTest, RecallsEarlierLines) {
    type("text first");
    press(returnKey);
    console_.waitForOutput("[1] text: done (#1)");
    type("ping");
    press(returnKey);
    console_.waitForOutput("[2] ping: done (#1)");
    press(std::string(upArrow) + upArrow + " again" + returnKey);
    console_.waitForOutput("[3] text: done (#2)");
    EXPECT_EQ(pasteboard({"paste"}), "first again");
}

TEST_F(ConsoleTerminalTest, RepliesBeforeTheNextPrompt) {
    type("ping");
    press(returnKey);
    const std::string shown = console_.waitForOutput("tavel> ");
    EXPECT_THAT(shown, HasSubstr("[1] ping: done (#0)\r\n"));
}

TEST_F(ConsoleTerminalTest, KeepsTheTypedTextWhenAnEventComes) {
    awaitAgent();
    type("text half a");
    pasteboard({"copy"}, "news");
    console_.waitForOutput(std::string(eraseLine) + "\x1b[2mclipboard changed (#1)\x1b[0m\r\n");
    console_.waitForOutput("text, 4 bytes: \"news\"\r\n");
    console_.waitForOutput("tavel> text half a"); // redrawn below the event
    press(" line" + std::string(returnKey));
    console_.waitForOutput("[2] text: done (#2)");
    EXPECT_EQ(pasteboard({"paste"}), "half a line");
}

TEST_F(ConsoleTerminalTest, ErasesEveryRowOfALongLine) {
    awaitAgent();
    // A prompt of 7 columns and a line of 80 end in the third row of 40 columns.
    const std::string text = "日本 " + std::string(66, 'x') + "END.";
    press("text " + text);
    console_.waitForOutput("END.");
    pasteboard({"copy"}, "news");
    console_.waitForOutput("\r\x1b[2A\x1b[J\x1b[2mclipboard changed");
    press("yz" + std::string(returnKey));
    console_.waitForOutput("[2] text: done (#2)");
    EXPECT_EQ(pasteboard({"paste"}), text + "yz");
}

TEST_F(ConsoleTerminalTest, ShowsEventsInTheMiddleOfAKey) {
    awaitAgent();
    type("text ab");
    press("\x1b"); // the start of an arrow key, or Escape
    pasteboard({"copy"}, "news");
    console_.waitForOutput("tavel> text ab");
    press("[Dx" + std::string(returnKey)); // the arrow to the left, then x
    console_.waitForOutput("[2] text: done (#2)");
    EXPECT_EQ(pasteboard({"paste"}), "axb");
}

TEST_F(ConsoleTerminalTest, SendsNoControlSequencesOfContentsToTheTerminal) {
    awaitAgent();
    pasteboard({"copy"}, "\x1b]0;title\x07\u009B2J");
    EXPECT_THAT(console_.waitForOutput("2J\"\r\n"), HasSubstr("\"\\e]0;title\\u{07}\\u{9b}2J\""));
}

TEST_F(ConsoleTerminalTest, EndsWithControlD) {
    press(controlD);
    const ToolResult result = console_.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, EndsWith("\r\n"));
    EXPECT_TRUE(std::filesystem::is_empty(world_.temporaryDirectory()));
}

TEST_F(ConsoleTerminalTest, EndsWithControlC) {
    type("half a line");
    press(controlC);
    const ToolResult result = console_.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, EndsWith("\r\n"));
    // The terminal signals its whole foreground process group, but the agent removed its directory.
    EXPECT_TRUE(std::filesystem::is_empty(world_.temporaryDirectory()));
}

TEST_F(ConsoleTerminalTest, EndsWithQuit) {
    type("quit");
    press(returnKey);
    const ToolResult result = console_.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, EndsWith("[1] quit: done (#0)\r\n"));
}

TEST_F(ConsoleTerminalTest, EndsWhenTheTerminalGoes) {
    type("text half");
    console_.sendSignal(SIGHUP);
    EXPECT_EQ(console_.finish().status, 0);
}

class ConsoleSurroundingsTest : public testing::Test {
protected:
    World world_;
};

TEST_F(ConsoleSurroundingsTest, SaysThatTheAgentEndedWhileALineWasTyped) {
    const std::string agent = world_.writeScript("agent", "read line\nread line\nexit 3\n");
    RunningTool console(world_, {TAVEL_CONSOLE, "--agent", agent}, RunningTool::Place::terminal);
    console.send("ping\r");
    console.waitForOutput("tavel> ");
    console.send("ping\r");
    const ToolResult result = console.finish();
    EXPECT_EQ(result.status, 1);
    EXPECT_THAT(result.output,
                EndsWith("\r\ntavel-console: the agent ended unexpectedly: exit status 3\r\n"));
}

TEST_F(ConsoleSurroundingsTest, UnderstandsUtf8InALocaleWithoutIt) {
    world_.setVariable("LC_ALL", "C");
    RunningTool console(world_, {TAVEL_CONSOLE}, RunningTool::Place::terminal);
    console.waitForOutput("tavel> ");
    console.send("text é\r");
    console.waitForOutput("[1] text: done (#1)");
    EXPECT_EQ(runTool(world_, {TAVEL_PASTEBOARD, "paste"}).output, "é");
}

TEST_F(ConsoleSurroundingsTest, ColorsNothingWhereThatIsRefused) {
    world_.setVariable("NO_COLOR", "1");
    RunningTool console(world_, {TAVEL_CONSOLE}, RunningTool::Place::terminal);
    console.waitForOutput("tavel> ");
    console.send("files gone\r");
    EXPECT_THAT(console.waitForOutput("(#0)\r\n"), Not(HasSubstr("\x1b[31m")));
}

TEST_F(ConsoleSurroundingsTest, ReadsPlainLinesOnATerminalWithoutACursor) {
    world_.setVariable("TERM", "dumb");
    RunningTool console(world_, {TAVEL_CONSOLE}, RunningTool::Place::terminal);
    console.send("ping\n");
    console.waitForOutput("[1] ping: done (#0)\r\n");
    console.send(controlD);
    const ToolResult result = console.finish();
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.output, Not(HasSubstr("tavel> ")));
}

TEST_F(ConsoleSurroundingsTest, ShowsRawLinesSafelyOnATerminal) {
    // The two-byte form of a control character that JSON lets pass unescaped.
    const std::string agent = world_.writeScript("agent", "printf '\\302\\233\\n'\nread line\n");
    RunningTool console(world_, {TAVEL_CONSOLE, "--raw", "--agent", agent}, RunningTool::Place::terminal);
    console.waitForOutput("< \\u{9b}");
    console.send(controlD);
    console.finish();
}

} // namespace

} // namespace tavel
