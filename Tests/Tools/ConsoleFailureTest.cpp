#include "Tests/Tools/RunningTool.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>

namespace tavel {

namespace {

using testing::EndsWith;
using testing::HasSubstr;

/// The console with missing or misbehaving agents.
class ConsoleFailureTest : public testing::Test {
protected:
    /// With a time-out of one second.
    ToolResult session(const std::string& agent, std::string_view input) const {
        return runTool(world_, {TAVEL_CONSOLE, "--agent", agent, "--timeout", "1"}, input);
    }

    World world_;
};

TEST_F(ConsoleFailureTest, SaysThatTheAgentIsMissing) {
    const ToolResult result = session("./nowhere", "ping\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, "tavel-console: Cannot start ./nowhere: No such file or directory\n");
}

TEST_F(ConsoleFailureTest, SaysThatTheAgentIsNoProgram) {
    world_.write("plain", "text");
    EXPECT_EQ(session("./plain", "ping\n").errors,
              "tavel-console: Cannot start ./plain: Permission denied\n");
}

TEST_F(ConsoleFailureTest, LooksForTheAgentBesideItself) {
    const std::filesystem::path copy = world_.directory() / "tavel-console";
    std::filesystem::copy_file(TAVEL_CONSOLE, copy);
    const ToolResult result = runTool(world_, {copy.string()}, "ping\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: Cannot start " +
                                 (world_.directory() / "TavelClipboardAgent").string() +
                                 ": No such file or directory\n");
}

TEST_F(ConsoleFailureTest, PassesItsOwnIdentifierToTheAgent) {
    // The agent prints its arguments and its parent's identifier, which the console shows.
    const std::string agent =
        world_.writeScript("agent", "echo \"$@ of $PPID\"\nwhile read line; do :; done\n");
    const ToolResult result = runTool(world_, {TAVEL_CONSOLE, "--agent", agent, "--pasteboard", "a b"}, "");
    const auto word = [&](std::string_view before) {
        const std::size_t begin = result.output.find(before) + before.size();
        return result.output.substr(begin, result.output.find_first_of(" \"", begin) - begin);
    };
    EXPECT_THAT(result.output, HasSubstr(" --test-pasteboard a b of "));
    EXPECT_EQ(word("--parent-pid "), word(" of "));
}

TEST_F(ConsoleFailureTest, SaysThatTheAgentEnded) {
    const std::string agent = world_.writeScript("agent", "read line\nexit 3\n");
    const ToolResult result = session(agent, "ping\nping\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent ended unexpectedly: exit status 3\n");
}

TEST_F(ConsoleFailureTest, NoticesTheAgentsEndWhileNothingIsTyped) {
    const std::string agent = world_.writeScript("agent", "kill -9 $$\n");
    RunningTool console(world_, {TAVEL_CONSOLE, "--agent", agent});
    const ToolResult result = console.finish(); // its input stays open
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent ended unexpectedly: signal 9 (Killed)\n");
}

TEST_F(ConsoleFailureTest, ShowsTheAgentsLastWords) {
    const std::string agent = world_.writeScript("agent", "printf 'some\\033words'\nexit 1\n");
    RunningTool console(world_, {TAVEL_CONSOLE, "--agent", agent});
    EXPECT_EQ(console.finish().output, "the agent said something unintelligible: \"some\\ewords\"\n");
}

TEST_F(ConsoleFailureTest, GivesUpOnASilentAgent) {
    const std::string agent = world_.writeScript("agent", "while read line; do :; done\n");
    const ToolResult result = session(agent, "ping\nping\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent does not answer\n");
}

TEST_F(ConsoleFailureTest, GivesUpOnAnAgentThatReadsNothing) {
    const std::string agent = world_.writeScript("agent", "trap '' TERM\nwhile :; do sleep 0.1; done\n");
    // More than the capacity of a pipe.
    const ToolResult result = session(agent, "text " + std::string(300'000, 'x') + "\n");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent does not answer\n");
}

TEST_F(ConsoleFailureTest, EndsAnAgentThatStays) {
    const std::string agent = world_.writeScript("agent", "echo $$ > pid\nwhile :; do sleep 0.1; done\n");
    const ToolResult result = session(agent, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent did not end by itself when its input ended\n");
}

TEST_F(ConsoleFailureTest, ReportsAnUncleanEndOfTheAgent) {
    const std::string agent = world_.writeScript("agent", "while read line; do :; done\nexit 4\n");
    const ToolResult result = session(agent, "");
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: the agent ended with exit status 4\n");
}

TEST_F(ConsoleFailureTest, NoticesThatItCannotWrite) {
    if (access("/dev/full", W_OK) != 0)
        GTEST_SKIP() << "this system has no /dev/full";
    const std::string script =
        world_.writeScript("full", std::string("echo ping | '") + TAVEL_CONSOLE + "' > /dev/full\n");
    const ToolResult result = runTool(world_, {script});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.errors, "tavel-console: standard output cannot be written\n");
}

TEST_F(ConsoleFailureTest, OutlivesTheReaderOfItsOutput) {
    const std::string script =
        world_.writeScript("pipe", std::string("{ read line <&3; echo ping; } 3>&- | :\n") +
                                       "(sleep 0.2; echo ping; echo ping) | { '" + TAVEL_CONSOLE +
                                       "'; echo status $? >&2; } | :\n");
    EXPECT_THAT(runTool(world_, {script}).errors,
                EndsWith("tavel-console: standard output cannot be written\nstatus 1\n"));
}

} // namespace

} // namespace tavel
