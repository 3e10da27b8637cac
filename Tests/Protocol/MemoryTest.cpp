#include "Linux/Store/LmdbEnvironment.h"
#include "Tests/Protocol/AgentTest.h"

#include <fstream>
#include <string>

namespace tavel {

namespace {

class Memory : public AgentTest {
protected:
    /// The process's own memory in use, in bytes: without files that it maps.
    static std::size_t memoryOf(pid_t process) {
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with("RssAnon:"))
                return std::stoull(line.substr(line.find_first_of("0123456789"))) * 1024;
        }
        throw std::runtime_error("The process's memory is unknown");
    }
};

TEST_F(Memory, holdsAQueuedPayloadOnce) {
    AgentProcess& agent = start();
    const std::string payload = repeated("YWFh", 350'000);
    const auto line = [&](int request) {
        return R"({"command":"write_text","request_id":)" + std::to_string(request) +
               R"(,"marker":"","text_b64":")" + payload + "\"}\n";
    };
    constexpr int count = 64;
    {
        const LmdbEnvironment environment(directory_.pasteboardStore());
        const auto lock = LmdbWrite::begin(environment); // the first write waits for this one
        ASSERT_NE(lock, nullptr);
        agent.send(line(0));
        agent.waitUntilIdle();
        const std::size_t before = memoryOf(agent.processIdentifier());
        for (int request = 1; request <= count; ++request)
            agent.send(line(request));
        agent.waitUntilIdle();
        const std::size_t queued = memoryOf(agent.processIdentifier()) - before;
        EXPECT_GE(queued, count * payload.size()) << "They are not queued";
        EXPECT_LE(queued, count * payload.size() * 5 / 4);
    }
    for (int request = 0; request <= count; ++request)
        EXPECT_EQ(agent.nextMessage(), pingReply(request, request + 1));
}

TEST_F(Memory, dropsALineThatItCannotHold) {
    AgentProcess::Options limited = options();
    limited.launcher = {"/bin/sh", "-c", R"(ulimit -v 600000; exec "$0" "$@")"}; // KiB
    AgentProcess& agent = launch(limited);
    agent.send(R"({"command":"ping","request_id":1,"x":")");
    const std::string piece(10'000'000, 'a');
    for (int pieces = 0; pieces < 40; ++pieces)
        agent.send(piece);
    agent.send("\"}\n" + pingLine(2));
    EXPECT_EQ(agent.nextMessage(), pingReply(2));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

} // namespace

} // namespace tavel
