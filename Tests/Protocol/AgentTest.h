#pragma once

#include "Tests/Protocol/OtherApplication.h"
#include "Tests/Support/AgentProcess.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

using Json = nlohmann::json;

/// What every test of the protocol starts from: a directory of its own, agents that live in it, and another
/// program on their pasteboard.
class AgentTest : public testing::Test {
protected:
    /// An agent in this test's directory, by default on the shared pasteboard.
    AgentProcess::Options options(std::vector<std::string> arguments = {"--test-pasteboard",
                                                                        *sharedPasteboard}) const;

    /// Starts an agent.
    AgentProcess& launch(const AgentProcess::Options& options);

    /// Starts an agent and waits for its first reply: from then on it reports what others copy.
    AgentProcess& start(const AgentProcess::Options& options);
    AgentProcess& start() { return start(options()); }

    /// Opened with its first use.
    OtherApplication& otherApplication();

    /// Lets time pass in which every agent polls. Nothing tells that an agent polled and found nothing to
    /// report, so another agent is watched: two of its reports have a whole interval between them.
    void waitForPolls();

    /// The export directories of the agents in this test's directory.
    std::vector<std::filesystem::path> exportDirectories() const;

    TestDirectory directory_;

private:
    std::optional<OtherApplication> otherApplication_;
    std::deque<AgentProcess> agents_;
    AgentProcess* pollingAgent_ = nullptr;
};

/// Sends the command with an identifier of its own. The next message has to be its reply, which is given
/// without the identifier.
Json request(AgentProcess& agent, Json command);

/// Replies, as `request` gives them.
Json success(std::int64_t sequence);
Json failure(std::string_view reason, std::int64_t sequence);

/// The whole reply to a ping.
Json pingReply(const Json& requestID, std::int64_t sequence = 0);

/// A line with its line feed.
std::string pingLine(std::uint64_t requestID);

Json announcement(std::int64_t sequence, std::string_view marker = "");
Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
               std::string_view marker = "");
Json filesEvent(const std::vector<std::string>& paths, std::int64_t sequence, std::string_view marker = "");
Json warning(std::string_view message);

/// That many next messages.
std::vector<Json> nextMessages(AgentProcess& agent, std::size_t count);

/// The next message has to be the reply to a ping that is sent now: so the agent is alive, has nothing more
/// to say of what it was doing, and did not answer what was sent before.
void expectSilence(AgentProcess& agent);

/// Waits until the agent cannot go on because its output was not read. It must have more to say than fits
/// into the pipe.
void waitUntilStalled(AgentProcess& agent);

std::string repeated(std::string_view text, std::size_t times);

} // namespace tavel
