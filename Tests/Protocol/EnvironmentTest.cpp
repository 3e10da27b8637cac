#include "Tests/Protocol/ExportTest.h"

#include <csignal>
#include <sstream>

namespace tavel {

namespace {

/// Variables that make libraries of the agent talk.
const std::map<std::string, std::optional<std::string>> talkative{
    {"G_DEBUG", "gc-friendly"}, {"G_ENABLE_DIAGNOSTIC", "1"}, {"G_MESSAGES_DEBUG", "all"},
    {"GIO_USE_VFS", "help"},    {"GTK_DEBUG", "all"},         {"IM_CONCURRENCY", "nonsense"},
    {"MALLOC_CHECK_", "3"},     {"MALLOC_PERTURB_", "7"},     {"VIPS_CONCURRENCY", "nonsense"},
    {"VIPS_INFO", "1"},         {"VIPS_LEAK", "1"},           {"VIPS_PROFILE", "1"},
    {"VIPS_TRACE", "1"},        {"VIPS_WARNING", "1"},
};

class Environment : public AgentTest {
protected:
    AgentProcess& startAmongTalkers() {
        AgentProcess::Options polluted = options();
        polluted.environment.insert(talkative.begin(), talkative.end());
        // libvips writes a profile into the working directory.
        polluted.launcher = {"/usr/bin/env", "--chdir=" + directory_.path().string()};
        return start(polluted);
    }

    /// The field of that name in the system's account of the process (proc(5), status).
    static std::string statusOf(const AgentProcess& agent, const std::string& field) {
        std::istringstream lines(contentOf("/proc/" + std::to_string(agent.processIdentifier()) + "/status"));
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(field + ":\t"))
                return line.substr(field.size() + 2);
        }
        return {};
    }
};

/// AgentProcess sees to it that nothing comes on standard error.
TEST_F(Environment, addsNothingToTheOutput) {
    AgentProcess& agent = startAmongTalkers();
    // Loads the image libraries.
    const std::int64_t sequence =
        otherApplication().copy({{representation("public.png", readPicture("jpeg-baseline.jpg"))}});
    EXPECT_EQ(agent.nextMessage(), announcement(sequence));
    EXPECT_EQ(agent.nextMessage().at("kind"), "image");
    EXPECT_EQ(request(agent, {{"command", "quit"}}), success(sequence));
    EXPECT_EQ(agent.nextLine(), std::nullopt);
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Environment, canGiveNoProgramMoreRights) {
    EXPECT_EQ(statusOf(start(), "NoNewPrivs"), "1");
}

TEST_F(Environment, letsNoSocketEndTheProcess) {
    const std::uint64_t blocked = std::stoull(statusOf(start(), "SigBlk"), nullptr, 16); // a bit for each
    EXPECT_EQ(blocked >> (SIGPIPE - 1) & 1, 1U);
}

TEST_F(Environment, findsNothingOnTheStandardDescriptorsForOutput) {
    AgentProcess& agent = start();
    const std::string descriptors = "/proc/" + std::to_string(agent.processIdentifier()) + "/fd/";
    for (const char* const descriptor : {"1", "2"})
        EXPECT_EQ(std::filesystem::read_symlink(descriptors + descriptor), "/dev/null") << descriptor;
}

} // namespace

} // namespace tavel
