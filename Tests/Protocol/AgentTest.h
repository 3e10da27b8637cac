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

/// The fixture of every protocol test: a directory of its own, agents that use it, and another program on
/// their pasteboard.
class AgentTest : public testing::Test {
protected:
    /// An agent in this test's directory, by default on the shared pasteboard.
    AgentProcess::Options options(std::vector<std::string> arguments = {"--test-pasteboard",
                                                                        *sharedPasteboard}) const;

    /// Starts an agent.
    AgentProcess& launch(const AgentProcess::Options& options);

    /// Starts an agent and waits for its first reply: it reports changes from then on.
    AgentProcess& start(const AgentProcess::Options& options);
    AgentProcess& start() { return start(options()); }

    /// Opened on first use.
    OtherApplication& otherApplication();

    /// Closes it: this process does not use the store any more.
    void forgetOtherApplication() { otherApplication_.reset(); }

    /// Waits until every agent has polled. A poll that finds no change is invisible, so this watches another
    /// agent: between two of its reports lies a whole polling interval.
    void waitForPolls();

    /// The export directories of the agents in this test's directory.
    std::vector<std::filesystem::path> exportDirectories() const;

    TestDirectory directory_;

private:
    std::optional<OtherApplication> otherApplication_;
    std::deque<AgentProcess> agents_;
    AgentProcess* pollingAgent_ = nullptr;
};

/// Sends the command with a new request identifier. Expects its reply as the next message, and returns the
/// reply without the identifier.
Json request(AgentProcess& agent, Json command);

/// Replies in the form that `request` returns.
Json success(std::int64_t sequence);
Json failure(std::string_view reason, std::int64_t sequence);

/// The whole reply to a ping.
Json pingReply(const Json& requestID, std::int64_t sequence = 0);

/// Ends in a line feed.
std::string pingLine(std::uint64_t requestID);

Json announcement(std::int64_t sequence, std::string_view marker = "");
Json textEvent(std::string_view base64, std::size_t bytes, std::int64_t sequence,
               std::string_view marker = "");
Json filesEvent(const std::vector<std::string>& paths, std::int64_t sequence, std::string_view marker = "");
Json warning(std::string_view message);

/// The next `count` messages.
std::vector<Json> nextMessages(AgentProcess& agent, std::size_t count);

/// Sends a ping, and expects its reply as the next message: the agent is alive and has sent nothing else.
void expectSilence(AgentProcess& agent);

/// Waits until the agent blocks on its full output pipe. It must have more to write than the pipe holds.
void waitUntilStalled(AgentProcess& agent);

std::string repeated(std::string_view text, std::size_t times);

} // namespace tavel
