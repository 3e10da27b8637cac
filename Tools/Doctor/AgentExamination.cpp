#include "Doctor/AgentExamination.h"

#include "Doctor/AgentTrial.h"
#include "Pasteboard/Gathered.h"
#include "Platform/PasteboardTypes.h"
#include "Support/Error.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

namespace tavel {

namespace {

constexpr std::size_t pings = 9;

using Milliseconds = std::chrono::duration<double, std::milli>;

Milliseconds durationOf(const auto& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::steady_clock::now() - begin;
}

std::string shown(Milliseconds duration) {
    std::array<char, 64> text{};
    const int length = std::snprintf(text.data(), text.size(), "%.2f ms", duration.count());
    return {text.data(), static_cast<std::size_t>(length)};
}

Milliseconds medianPing(AgentTrial& trial) {
    std::array<Milliseconds, pings> times{};
    for (Milliseconds& time : times)
        time = durationOf([&] { static_cast<void>(trial.ask(command::Ping{})); });
    std::ranges::nth_element(times, times.begin() + pings / 2);
    return times[pings / 2];
}

/// The text on the trial's pasteboard, which is then cleared.
std::optional<std::string> takeText(Platform& platform, std::size_t longest) {
    const auto board = platform.openPasteboard(AgentTrial::pasteboardName);
    std::optional<Bytes> text;
    Gathered(platform.eventLoop(), *board).awaitValue({std::string(pasteboardType::string), longest}, [&] {
        text = board->string(pasteboardType::string, longest);
    });
    board->replaceWithItems({});
    return text ? std::optional(std::string(text->view())) : std::nullopt;
}

/// Why the text that the agent writes does not come back; empty if it does.
std::string writingProblem(AgentTrial& trial, Platform& platform) {
    const std::string text = "A trial of tavel-console doctor, process " + std::to_string(getpid());
    const Reply reply = trial.ask(command::WriteText{0, Bytes::copyOf(text), ""});
    if (!reply.ok)
        return "the agent refuses to write: \"" + reply.reason + "\"";
    try {
        const auto read = takeText(platform, text.size());
        if (!read)
            return "the text that the agent wrote cannot be read";
        return *read == text ? "" : "another text came back than the agent wrote";
    } catch (const Error& error) {
        return error.description();
    }
}

void examineWriting(Report& report, AgentTrial& trial, Platform& platform) {
    const std::string where = platform.describePasteboard(AgentTrial::pasteboardName);
    const std::string problem = writingProblem(trial, platform);
    if (problem.empty())
        report.line("write and read", "works; tried on " + where);
    else
        report.limitation("write and read", problem + "; tried on " + where,
                          "What the parent sends cannot be pasted. The system's log may say why.");
}

Reply tryFilePrompt(AgentTrial& trial) {
    Reply answer = trial.ask(command::ConfigureFilePrompt{0, true});
    static_cast<void>(trial.ask(command::ConfigureFilePrompt{0, false}));
    return answer;
}

} // namespace

std::optional<Reply> examineAgent(Report& report, Platform& platform, const std::filesystem::path& executable,
                                  std::chrono::milliseconds timeout) {
    report.section("Agent");
    report.line("program", executable.string());
    std::optional<Reply> promptAnswer;
    try {
        std::optional<AgentTrial> trial;
        const auto start = durationOf([&] {
            trial.emplace(executable, timeout);
            static_cast<void>(trial->ask(command::Ping{}));
        });
        report.line("start", shown(start) + " to the first answer");
        report.line("ping", shown(medianPing(*trial)) + ", the median of " + std::to_string(pings));
        examineWriting(report, *trial, platform);
        promptAnswer = tryFilePrompt(*trial);
        report.line("end", shown(durationOf([&] { trial->end(); })));
    } catch (const Error& error) {
        report.failure("fault", error.description(),
                       "Install the agent again, or name another executable with --agent.");
    }
    return promptAnswer;
}

} // namespace tavel
