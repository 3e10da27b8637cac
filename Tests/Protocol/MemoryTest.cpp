#include "Linux/Store/PasteboardStore.h"
#include "Support/Base64.h"
#include "Tests/Protocol/AgentTest.h"
#include "Tests/Support/WaitUntil.h"

#include <chrono>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>

namespace tavel {

namespace {

class Memory : public AgentTest {
protected:
    /// The process's own memory in use, in bytes: without files that it maps.
    static std::size_t memoryOf(pid_t process) { return statusOf(process, "RssAnon:"); }

    /// The most memory that the process ever had in use, in bytes.
    static std::size_t peakMemoryOf(pid_t process) { return statusOf(process, "VmHWM:"); }

    static std::size_t statusOf(pid_t process, std::string_view name) {
        std::ifstream status("/proc/" + std::to_string(process) + "/status");
        for (std::string line; std::getline(status, line);) {
            if (line.starts_with(name))
                return std::stoull(line.substr(line.find_first_of("0123456789"))) * 1024;
        }
        throw std::runtime_error("The process's memory is unknown");
    }

    /// Waits far longer than the agent needs, for the sake of a busy machine.
    static void expectReturned(const AgentProcess& agent, std::size_t start) {
        constexpr std::size_t most = std::size_t{2} << 20;
        waitUntil([&] { return memoryOf(agent.processIdentifier()) <= start + most; },
                  std::chrono::seconds(30));
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
        const tavel::PasteboardStore store(directory_.pasteboardStore());
        const auto lock = LmdbWrite::begin(store.changeCounts()); // the first write waits for this one
        ASSERT_NE(lock, nullptr);
        agent.send(line(0));
        agent.waitUntilIdle();
        const std::size_t before = memoryOf(agent.processIdentifier());
        for (int request = 1; request <= count; ++request)
            agent.send(line(request));
        agent.waitUntilIdle();
        const std::size_t queued = memoryOf(agent.processIdentifier()) - before;
        const std::size_t decoded = payload.size() / 4 * 3;
        EXPECT_GE(queued, count * decoded) << "They are not queued";
        EXPECT_LE(queued, count * decoded * 5 / 4);
    }
    for (int request = 0; request <= count; ++request)
        EXPECT_EQ(agent.nextMessage(), pingReply(request, request + 1));
}

TEST_F(Memory, dropsALineThatItCannotHold) {
    AgentProcess::Options limited = options();
    limited.launcher = {"/bin/sh", "-c", R"(ulimit -v 600000; exec "$0" "$@")"}; // KiB
    AgentProcess& agent = launch(limited);
    agent.send(R"({"command":"ping","request_id":1,"x":")");
    const std::string piece = repeated(".", 10'000'000);
    for (int pieces = 0; pieces < 40; ++pieces)
        agent.send(piece);
    agent.send("\"}\n" + pingLine(2));
    EXPECT_EQ(agent.nextMessage(), pingReply(2));
    agent.closeInput();
    EXPECT_EQ(agent.waitForExit(), 0);
}

TEST_F(Memory, keepsNoMoreOfAPayloadThanTheLargestPicture) {
    AgentProcess& agent = start();
    agent.send(R"({"command":"write_image_data","request_id":1,"image_b64":")");
    const std::string piece = repeated("AAAA", 2'500'000);
    for (int pieces = 0; pieces < 40; ++pieces)
        agent.send(piece);
    agent.send("\"}\n");
    EXPECT_EQ(agent.nextMessage()["reason"], "Image historique invalide");
    EXPECT_LE(peakMemoryOf(agent.processIdentifier()), std::size_t{90} << 20);
}

TEST_F(Memory, ofTextsThatTheParentSentAllAtOnceIsReturned) {
    constexpr std::uint64_t count = 100;
    AgentProcess& agent = start();
    const std::size_t atStart = memoryOf(agent.processIdentifier());
    std::string base64;
    appendBase64(base64, std::string(1 << 20, 't'));
    for (std::uint64_t number = 1; number <= count; ++number)
        agent.send(R"({"command":"write_text","marker":"m","request_id":)" + std::to_string(number) +
                   R"(,"text_b64":")" + base64 + "\"}\n");
    for (std::uint64_t number = 1; number <= count; ++number)
        EXPECT_EQ(agent.nextMessage()["request_id"], number);
    expectReturned(agent, atStart);
}

TEST_F(Memory, ofAnEventThatTheParentReadsLateIsReturned) {
    AgentProcess& agent = start();
    const std::size_t atStart = memoryOf(agent.processIdentifier());
    const std::string text = repeated("t", std::size_t{4} << 20);
    // The C library takes the memory of the first event for itself, and that of the second one from its heap.
    // The agent has returned what was free by the time that the parent reads.
    for (const std::chrono::seconds pause : {std::chrono::seconds(0), std::chrono::seconds(4)}) {
        const std::int64_t sequence = otherApplication().copyText(text);
        std::this_thread::sleep_for(pause);
        EXPECT_EQ(agent.nextMessage(), announcement(sequence));
        EXPECT_EQ(agent.nextMessage()["bytes"], text.size());
    }
    expectReturned(agent, atStart);
}

} // namespace

} // namespace tavel
