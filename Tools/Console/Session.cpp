#include "Console/Session.h"

#include "Console/ChildProcess.h"
#include "Console/HumanText.h"
#include "Support/Files.h"
#include "TavelClipboardAgent/main/Protocol/MessageDecoder.h"
#include "TavelClipboardAgent/main/Protocol/Names.h"

#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <utility>
#include <variant>

namespace tavel {

namespace {

constexpr const char* promptText = "tavel> ";

/// The longest wait for a reply before the next prompt: the reply reads better above it.
constexpr std::chrono::milliseconds promptDelay{250};

constexpr std::size_t readBytes = std::size_t{64} * 1024;

bool isColorWanted() {
    const char* const refused = std::getenv("NO_COLOR");
    return isLineEditingPossible() && (refused == nullptr || *refused == '\0');
}

} // namespace

Session::Session(const ConsoleOptions& options, const std::filesystem::path& agentExecutable,
                 std::string clipboard)
    : options_(options), clipboard_(std::move(clipboard)),
      trace_(options.trace ? std::optional<TraceWriter>(std::in_place, *options.trace)
                           : std::optional<TraceWriter>()),
      record_(options.replay ? readTrace(*options.replay) : std::vector<TracedLine>()), comparison_(record_),
      places_(Places::ofThisProcess()), onTerminal_(isLineEditingPossible()), colored_(isColorWanted()),
      agent_(agentExecutable, options.pasteboard, agentHandlers()) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        signalWatches_.push_back(Watch::signal(number, [this] { interrupted_ = true; }));
    signalWatches_.push_back(Watch::signal(SIGWINCH, [this] {
        if (editor_ != nullptr)
            editor_->resize();
    }));
}

Agent::Handlers Session::agentHandlers() {
    Agent::Handlers handlers;
    handlers.sent = [this](std::string_view line) { note(Speaker::parent, line); };
    handlers.received = [this](std::string_view line) { note(Speaker::agent, line); };
    handlers.said = [this](const AgentMessage& message, std::string_view requestName) {
        if (!options_.raw)
            show(describeMessage(message, requestName));
        if (options_.replay)
            compare(message, requestName);
    };
    handlers.unintelligible = [this](std::string_view line) {
        if (!options_.raw)
            show(describeUnintelligible(line));
    };
    handlers.ended = [this](int status) {
        agentEnd_ = status;
        if (trace_)
            trace_->noteEnd(describeEnd(status));
    };
    return handlers;
}

int Session::run() {
    if (options_.replay)
        replay();
    else if (onTerminal_)
        runOnTerminal();
    else
        runOnLines();
    return end();
}

void Session::runOnTerminal() {
    editor_ = std::make_unique<LineEditor>(promptText, [this] { return waitForKeyboard(); });
    show({"The agent stands on " + clipboard_ + ".", Tone::dim});
    show({"The agent is running. Type help for the commands, quit or Ctrl-D to end.", Tone::dim});
    while (!isOver()) {
        const auto line = editor_->readLine();
        if (!line)
            return;
        handleLine(*line);
        runUntil([this] { return !agent_.hasOutstandingRequests() || isOver(); }, promptDelay);
    }
}

void Session::runOnLines() {
    while (!isOver() && waitForNextLine()) {
        const std::vector<std::string> lines = std::exchange(pendingLines_, {});
        for (const std::string& line : lines) {
            handleLine(line);
            if (!waitForReplies() || isOver())
                return;
        }
    }
}

/// Each line of the recorded parent waits for the replies that the parent had then, and for its time.
void Session::replay() {
    const auto start = std::chrono::steady_clock::now();
    std::size_t replies = 0;
    for (const TracedLine& line : record_) {
        if (line.speaker == Speaker::agent) {
            const auto message = decodeMessage(line.text);
            replies += message && std::holds_alternative<Reply>(*message) ? 1U : 0U;
            continue;
        }
        if (!waitForReplies(replies) || !waitForTime(start + line.time / options_.speed))
            break;
        const auto head = decodeCommandHead(line.text);
        agentEndExpected_ = agentEndExpected_ || (head && head->name == commandName::quit);
        agent_.sendLine(line.text);
    }
    if (!isOver() && waitForReplies(replies) && !record_.empty())
        waitForTime(start + record_.back().time / options_.speed); // when the recorded session ended
    show({comparison_.summary(), Tone::dim});
}

/// Waits until so many replies have come. False if the session is over.
bool Session::waitForReplies(std::size_t replies) {
    const auto settled = [&] { return comparison_.replies() >= replies || isOver(); };
    unanswered_ = !runUntil(settled, options_.timeout);
    return !unanswered_ && !isOver();
}

/// Waits for that moment of the record. False if the session is over.
bool Session::waitForTime(std::chrono::steady_clock::time_point due) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(due - std::chrono::steady_clock::now());
    if (left > std::chrono::milliseconds::zero())
        runUntil([this] { return isOver(); }, left);
    return !isOver();
}

bool Session::isOver() const {
    return agentEnd_ || interrupted_ || quitting_ || outputFailed_ || (trace_ && trace_->hasFailed());
}

bool Session::waitForKeyboard() {
    bool ready = false;
    const Watch keyboard = Watch::readable(STDIN_FILENO, [&] { ready = true; });
    while (!ready && !isOver())
        g_main_context_iteration(nullptr, TRUE);
    return !isOver();
}

/// Waits without a limit. False at the end of input.
bool Session::waitForNextLine() {
    const auto keep = [this](std::string_view line) { pendingLines_.emplace_back(line); };
    while (pendingLines_.empty() && !inputEnded_) {
        if (!waitForKeyboard())
            return false;
        std::array<char, readBytes> buffer;
        const ssize_t count = read(STDIN_FILENO, buffer.data(), buffer.size());
        if (count > 0) {
            inputLines_.append({buffer.data(), static_cast<std::size_t>(count)}, keep);
        } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
            inputLines_.finish(keep);
            inputEnded_ = true;
        }
    }
    return !pendingLines_.empty();
}

/// False if a reply is missing at the time-out.
bool Session::waitForReplies() {
    const auto settled = [this] { return !agent_.hasOutstandingRequests() || agentEnd_ || interrupted_; };
    unanswered_ = !runUntil(settled, options_.timeout);
    return !unanswered_;
}

/// Ends the agent if it is still running. Returns the exit status.
int Session::end() {
    agentEndExpected_ = agentEndExpected_ || !agentEnd_;
    const bool endedByItself = !agent_.isRunning() || agent_.end(options_.timeout);
    editor_.reset();
    if (!agentEndExpected_)
        return complain("the agent ended unexpectedly: " + describeEnd(*agentEnd_));
    if (unanswered_)
        return complain("the agent does not answer");
    if (!endedByItself)
        return complain("the agent did not end by itself when its input ended");
    if (agentEnd_ && *agentEnd_ != 0)
        return complain("the agent ended with " + describeEnd(*agentEnd_));
    if (outputFailed_)
        return complain("standard output cannot be written");
    if (trace_ && trace_->hasFailed())
        return complain("the record cannot be written");
    if (options_.replay && !interrupted_ && (comparison_.differences() > 0 || comparison_.missing() > 0))
        return complain("the replies are not as recorded");
    return 0;
}

void Session::handleLine(std::string_view line) {
    if (options_.raw && line.starts_with('{')) {
        agent_.sendLine(line);
        return;
    }
    Wish wish = readHumanCommand(line, places_);
    if (auto* const request = std::get_if<wish::Request>(&wish)) {
        quitting_ = agentEndExpected_ = std::holds_alternative<command::Quit>(request->command);
        agent_.send(std::move(request->name), std::move(request->command));
    } else if (const auto* const mistake = std::get_if<wish::Mistake>(&wish)) {
        show({mistake->explanation, Tone::warning});
    } else if (std::holds_alternative<wish::Help>(wish)) {
        print(humanCommandHelp());
    }
}

void Session::note(Speaker speaker, std::string_view line) {
    if (trace_)
        trace_->note(speaker, line);
    if (options_.raw)
        showRaw(speaker == Speaker::parent ? '>' : '<', line);
}

void Session::compare(const AgentMessage& message, std::string_view requestName) {
    const auto* const reply = std::get_if<Reply>(&message);
    if (reply == nullptr)
        return;
    if (const auto difference = comparison_.compare(*reply, requestName))
        show({*difference, Tone::warning});
}

void Session::showRaw(char direction, std::string_view line) {
    // A program gets the bytes verbatim; a terminal must not interpret them.
    std::string shown{direction, ' '};
    shown += onTerminal_ ? visibleText(line) : std::string(line);
    print(shown + '\n');
}

void Session::show(const Paragraph& paragraph) {
    print(render(paragraph, colored_));
}

void Session::print(const std::string& lines) {
    const bool printed = editor_ != nullptr ? editor_->print(lines) : writeAll(STDOUT_FILENO, lines);
    outputFailed_ = outputFailed_ || !printed;
}

int Session::complain(std::string_view what) const {
    static_cast<void>(writeAll(STDERR_FILENO, "tavel-console: " + std::string(what) + "\n"));
    return 1;
}

} // namespace tavel
