#pragma once

#include "Tests/Clients/Cpp/HandOver.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"
#include "tavel/ClipboardAgent.h"

#include <gmock/gmock.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <future>
#include <string>

namespace tavel::client {

/// Much shorter than a test takes that has to let it pass.
inline constexpr std::chrono::milliseconds shortTime{200};

/// Makes scripts that stand in for the agent, and clients of them or of the real agent.
class FakeAgentTest : public testing::Test {
protected:
    /// A program that runs the script. In it, `reply LINE` answers the command in that line with the change
    /// count 1, and `log TEXT` sends an event.
    std::filesystem::path program(const std::string& script) {
        const std::filesystem::path file =
            directory_.makeFile("agent" + std::to_string(++programs_), R"(#!/bin/sh
number() { number=${1##*\"$2\":}; number=${number%%[!0-9]*}; }
reply() { number "$1" request_id; printf '{"request_id":%s,"ok":true,"reason":"","sequence":%s}\n' $number ${2:-1}; }
log() { printf '{"event":"log","level":"warning","message":"%s"}\n' "$1"; }
)" + script + "\n");
        std::filesystem::permissions(file, std::filesystem::perms::owner_all);
        return file;
    }

    static std::filesystem::path realAgent() { return std::getenv("TAVEL_TEST_AGENT"); }

    /// The options of a client of this program.
    static Options of(std::filesystem::path program) {
        Options options;
        options.program = std::move(program);
        return options;
    }

    static Options impatient(std::filesystem::path program) {
        Options options = of(std::move(program));
        options.replyTimeout = shortTime;
        return options;
    }

    Handlers handlers() {
        return {.event = [this](const Event& event) { events_.add(event); },
                .ended = [this](const End& end) { ends_.add(end); }};
    }

    template <typename Error>
    static void expectFailure(ClipboardAgent::Count count) {
        ASSERT_EQ(count.wait_for(std::chrono::minutes(1)), std::future_status::ready);
        EXPECT_THROW(count.get(), Error);
    }

    static void expectNoZombie(const ClipboardAgent& agent) {
        EXPECT_EQ(waitpid(agent.processIdentifier(), nullptr, WNOHANG), -1);
        EXPECT_EQ(errno, ECHILD);
    }

    ScratchDirectory directory_;
    HandOver<Event> events_;
    HandOver<End> ends_;

private:
    int programs_ = 0;
};

inline constexpr const char* replyToAll = "while read -r line; do reply \"$line\"; done";

} // namespace tavel::client
