#include "Tests/Protocol/AgentTest.h"

#include "Tests/Support/WaitUntil.h"

#include <utility>

namespace tavel {

namespace {

/// Unique, and out of the range that tests use themselves.
std::uint64_t nextRequestID() {
    static std::uint64_t last = 1'000'000'000;
    return ++last;
}

} // namespace

AgentProcess::Options AgentTest::options(std::vector<std::string> arguments) const {
    AgentProcess::Options options;
    options.arguments = std::move(arguments);
    options.environment = directory_.environment();
    return options;
}

AgentProcess& AgentTest::launch(const AgentProcess::Options& options) {
    return agents_.emplace_back(options);
}

AgentProcess& AgentTest::start(const AgentProcess::Options& options) {
    AgentProcess& agent = launch(options);
    expectSilence(agent);
    return agent;
}

OtherApplication& AgentTest::otherApplication() {
    if (!otherApplication_)
        otherApplication_.emplace(directory_.pasteboardStore());
    return *otherApplication_;
}

void AgentTest::waitForPolls() {
    const PasteboardName pasteboard = "waitForPolls";
    if (pollingAgent_ == nullptr)
        pollingAgent_ = &start(options({"--test-pasteboard", *pasteboard}));
    for (int report = 0; report < 3; ++report) {
        const std::int64_t sequence = otherApplication().copy({}, pasteboard);
        EXPECT_EQ(pollingAgent_->nextMessage(), announcement(sequence));
    }
}

std::vector<std::filesystem::path> AgentTest::exportDirectories() const {
    std::vector<std::filesystem::path> found;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.temporaryDirectory())) {
        if (entry.path().filename().string().starts_with("tavel-clipboard-"))
            found.push_back(entry.path());
    }
    return found;
}

Json request(AgentProcess& agent, Json command) {
    const std::uint64_t requestID = nextRequestID();
    command["request_id"] = requestID;
    agent.send(command.dump() + "\n");
    Json reply = agent.nextMessage();
    EXPECT_EQ(reply.value("request_id", Json()), Json(requestID)) << reply;
    reply.erase("request_id");
    return reply;
}

Json success(std::int64_t sequence) {
    return {{"ok", true}, {"reason", ""}, {"sequence", sequence}};
}

Json failure(std::string_view reason, std::int64_t sequence) {
    return {{"ok", false}, {"reason", reason}, {"sequence", sequence}};
}

Json pingReply(const Json& requestID, std::int64_t sequence) {
    Json reply = success(sequence);
    reply["request_id"] = requestID;
    return reply;
}

std::string pingLine(std::uint64_t requestID) {
    return Json{{"command", "ping"}, {"request_id", requestID}}.dump() + "\n";
}

Json announcement(std::int64_t sequence, std::string_view marker) {
    return {{"event", "change"}, {"kind", "unsupported"}, {"marker", marker}, {"sequence", sequence}};
}

Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence, std::string_view marker) {
    return {{"event", "change"},
            {"text_b64", base64},
            {"marker", marker},
            {"bytes", bytes},
            {"sequence", sequence}};
}

Json filesEvent(const std::vector<std::string>& paths, std::int64_t sequence, std::string_view marker) {
    return {
        {"event", "change"}, {"kind", "files"}, {"paths", paths}, {"marker", marker}, {"sequence", sequence}};
}

Json warning(std::string_view message) {
    return {{"event", "log"}, {"level", "warning"}, {"message", message}};
}

std::vector<Json> nextMessages(AgentProcess& agent, std::size_t count) {
    std::vector<Json> messages;
    while (messages.size() < count)
        messages.push_back(agent.nextMessage());
    return messages;
}

void expectSilence(AgentProcess& agent) {
    EXPECT_TRUE(request(agent, {{"command", "ping"}}).value("ok", false));
}

void waitUntilStalled(AgentProcess& agent) {
    // Less than any pipe's capacity, but more than an announcement.
    waitUntil([&] { return agent.unreadOutputBytes() > 2048; }, AgentProcess::deadline);
    agent.waitUntilIdle();
}

std::string repeated(std::string_view text, std::size_t times) {
    std::string result;
    result.reserve(text.size() * times);
    for (std::size_t i = 0; i < times; ++i)
        result += text;
    return result;
}

} // namespace tavel
