#include "Tests/Support/AgentProcess.h"

#include "Tests/Support/WaitUntil.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>

namespace tavel {

namespace {

using namespace std::chrono_literals;

std::vector<std::string>
changedEnvironment(const std::map<std::string, std::optional<std::string>>& changes) {
    std::vector<std::string> variables;
    for (char** variable = environ; *variable != nullptr; ++variable) {
        const std::string text = *variable;
        if (!changes.contains(text.substr(0, text.find('='))))
            variables.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (value)
            variables.push_back(name + "=" + *value);
    }
    return variables;
}

/// Whether each thread of the process sleeps in a system call, as /proc tells: the letter behind the name.
bool isAsleep(pid_t process) {
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream file(thread.path() / "stat");
        const std::string status{std::istreambuf_iterator<char>(file), {}};
        const std::size_t name = status.rfind(") ");
        if (name == std::string::npos || status.substr(name + 2, 1) != "S")
            return false;
    }
    return true;
}

TestProcess::Options processOptions(const AgentProcess::Options& agent) {
    const std::string program = TAVEL_AGENT_PROGRAM;
    TestProcess::Options options;
    options.program = agent.launcher.empty() ? program : agent.launcher.front();
    options.arguments = agent.launcher;
    options.arguments.push_back(agent.programName.value_or(program));
    options.arguments.insert(options.arguments.end(), agent.arguments.begin(), agent.arguments.end());
    options.environment = changedEnvironment(agent.environment);
    options.capturesErrors = true;
    options.closedDescriptors = agent.closedDescriptors;
    options.nonBlockingPipes = agent.nonBlockingPipes;
    options.outputPipeBytes = agent.outputPipeBytes;
    return options;
}

/// How often the process's threads have gone to sleep so far. A thread that runs does so again.
std::uint64_t contextSwitches(pid_t process) {
    const std::string name = "voluntary_ctxt_switches:";
    std::uint64_t switches = 0;
    for (const auto& thread :
         std::filesystem::directory_iterator("/proc/" + std::to_string(process) + "/task")) {
        std::ifstream lines(thread.path() / "status");
        for (std::string line; std::getline(lines, line);) {
            if (line.starts_with(name))
                switches += std::stoull(line.substr(name.size()));
        }
    }
    return switches;
}

} // namespace

AgentProcess::AgentProcess(const Options& options) : process_(processOptions(options)) {}

AgentProcess::~AgentProcess() {
    process_.end();
    while (process_.transfer(0ms)) {
        // What the agent wrote before its end.
    }
    std::string_view unread = process_.output();
    for (std::size_t feed = unread.find('\n'); feed != std::string_view::npos; feed = unread.find('\n')) {
        recordedLines_.received(unread.substr(0, feed));
        unread.remove_prefix(feed + 1);
    }
    EXPECT_EQ(process_.errors(), "") << "The agent wrote to standard error.";
}

void AgentProcess::send(std::string_view bytes) {
    recordedLines_.sent(bytes);
    process_.send(bytes);
}

void AgentProcess::closeInput() {
    recordedLines_.endInput();
    process_.closeInput();
}

void AgentProcess::sendByteByByte(std::string_view bytes) {
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        send(bytes.substr(i, 1));
        waitUntil([this] { return process_.unreadInputBytes() == 0; }, deadline);
    }
}

std::optional<std::string> AgentProcess::nextLine() {
    auto line = process_.nextLine();
    if (!line && !process_.output().empty())
        throw std::runtime_error("The agent's output ends within a line: " + process_.output());
    if (line)
        recordedLines_.received(*line);
    return line;
}

nlohmann::json AgentProcess::nextMessage() {
    const auto line = nextLine();
    if (!line)
        throw std::runtime_error("The agent's output has ended.");
    return nlohmann::json::parse(*line);
}

std::vector<nlohmann::json> AgentProcess::remainingMessages() {
    std::vector<nlohmann::json> messages;
    while (const auto line = nextLine())
        messages.push_back(nlohmann::json::parse(*line));
    return messages;
}

void AgentProcess::waitUntilIdle() {
    // Twice, because a thread that was looked at may have been woken by one that was looked at later.
    const auto isIdle = [this] {
        return process_.unreadInputBytes() == 0 && isAsleep(process_.processIdentifier());
    };
    waitUntil(
        [&] {
            const bool first = isIdle();
            return first && isIdle();
        },
        deadline);
}

void AgentProcess::waitUntilAtRest() {
    std::uint64_t before = 0;
    waitUntil(
        [&] {
            const std::uint64_t switches = contextSwitches(process_.processIdentifier());
            if (std::exchange(before, switches) == switches)
                return true;
            std::this_thread::sleep_for(1s);
            return false;
        },
        deadline);
}

int AgentProcess::waitForExit() {
    waitUntil(
        [&] {
            while (process_.transfer(0ms)) {
                // A full pipe would keep the agent from its end.
            }
            return process_.endStatus().has_value();
        },
        deadline);
    return *process_.endStatus();
}

} // namespace tavel
