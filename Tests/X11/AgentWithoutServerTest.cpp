#include "Tests/X11/X11AgentTest.h"

#include <unistd.h>

#include <csignal>
#include <fstream>
#include <iterator>
#include <sstream>

namespace tavel {

namespace {

/// An agent that loses its X server.
class AgentWithLostServer : public X11AgentTest {};

/// Processor time that the process has used, in clock ticks (proc(5), stat, fields 14 and 15).
std::int64_t processorTicks(pid_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/stat");
    const std::string status{std::istreambuf_iterator<char>(file), {}};
    std::istringstream fields(status.substr(status.rfind(')') + 2));
    std::string skipped;
    for (int field = 3; field < 14; ++field)
        fields >> skipped;
    std::int64_t user = 0;
    std::int64_t system = 0;
    fields >> user >> system;
    return user + system;
}

TEST_F(AgentWithLostServer, answersAndEndsAsEver) {
    copyWithXclip("before");
    expectSilence(agent());
    server_.stop();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(0));
    EXPECT_EQ(request(agent(), {{"command", "discard_pending"}}), success(0));
    agent().closeInput();
    EXPECT_EQ(agent().nextLine(), std::nullopt);
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(AgentWithLostServer, endsOnQuit) {
    agent();
    server_.stop();
    EXPECT_EQ(request(agent(), {{"command", "quit"}}), success(0));
    EXPECT_EQ(agent().waitForExit(), 0);
}

TEST_F(AgentWithLostServer, failsEveryWriteWithItsReason) {
    const std::string text = world_.write("text.txt", "text");
    const std::string picture = TAVEL_TEST_PICTURES "/png-2-8.png";
    agent();
    server_.stop();
    EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}),
              failure("Écriture NSPasteboard impossible", 0));
    const auto write = [&](const char* kind, const std::string& path) {
        return request(agent(),
                       {{"command", "write_files"}, {"kind", kind}, {"paths", {path}}, {"marker", ""}});
    };
    EXPECT_EQ(write("files", text), failure("Écriture fichiers impossible", 0));
    EXPECT_EQ(write("formats", text), failure("Écriture des formats impossible", 0));
    EXPECT_EQ(write("image", picture), failure("Écriture image impossible", 0));
}

TEST_F(AgentWithLostServer, keepsTheChangeCountAndReportsNothing) {
    EXPECT_EQ(request(agent(), {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}}), success(1));
    server_.stop();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
    waitForPolls();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
}

TEST_F(AgentWithLostServer, doesNotSpin) {
    agent();
    server_.stop();
    expectSilence(agent());
    const std::int64_t before = processorTicks(agent().processIdentifier());
    for (int round = 0; round < 3; ++round)
        waitForPolls(); // most of a second, in which an agent that spins would use much processor time
    EXPECT_LT(processorTicks(agent().processIdentifier()) - before, sysconf(_SC_CLK_TCK) / 4);
}

TEST_F(AgentWithLostServer, noticesItsParentsEnd) {
    AgentProcess::Options below = x11Options();
    below.launcher = {"/bin/sh", "-c", R"(exec 3<&0; "$0" "$@" --parent-pid $$ <&3 & wait)"};
    AgentProcess& watched = start(below);
    server_.stop();
    expectSilence(watched);
    watched.signal(SIGKILL); // the shell
    // After the shell's end, only the agent has the output open.
    EXPECT_EQ(watched.nextLine(), std::nullopt);
    EXPECT_TRUE(exportDirectories().empty());
}

/// An agent that starts without an X server.
class AgentWithoutServer : public X11AgentTest {
protected:
    void expectHeadless(const AgentProcess::Options& headless) {
        AgentProcess& alone = start(headless);
        const std::int64_t sequence = otherApplication().copyText("hi");
        EXPECT_EQ(alone.nextMessage(), announcement(sequence));
        EXPECT_EQ(alone.nextMessage(), textEvent("aGk", 2, sequence));
    }
};

TEST_F(AgentWithoutServer, worksOnTheStoreIfTheDisplayIsNone) {
    for (const char* const display : {"", "nonsense", ":65000", "nobody.invalid:0"}) {
        AgentProcess::Options headless = options();
        headless.environment["DISPLAY"] = display;
        expectHeadless(headless);
    }
}

} // namespace

} // namespace tavel
