#include "Console/Options.h"

#include "Console/HumanCommand.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace tavel {

namespace {

constexpr int usageStatus = 2;
constexpr int longestTimeout = 3600;

std::string footer() {
    return "Commands, one per line:\n" + humanCommandHelp() +
           "\nThe exit status is 0 when the session came to its end, also by Ctrl-C, whatever became of the "
           "single\n"
           "commands; 1 when the agent could not be started, went away or did not answer; 2 for a wrong "
           "option.\n";
}

} // namespace

std::variant<ConsoleOptions, ConsoleUsage> parseConsoleArguments(const std::vector<std::string>& arguments) {
    CLI::App app(
        "Talks to the clipboard agent by hand: starts it, sends it what is typed, and shows what it says.",
        "tavel-console");
    ConsoleOptions options;
    int timeout = static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(options.timeout).count());
    app.add_option("--agent", options.agent,
                   "The agent's executable; without it TavelClipboardAgent next to this program");
    CLI::Option* const pasteboard = app.add_option("--pasteboard", options.pasteboard,
                                                   "The pasteboard of that name instead of the general one");
    CLI::Option* const raw =
        app.add_flag("--raw", options.raw,
                     "Show the protocol's lines in both directions, and send lines that begin "
                     "with { as they are");
    app.add_flag("--demo", options.demo,
                 "Play a short session on a private pasteboard, and check what happens")
        ->excludes(pasteboard)
        ->excludes(raw);
    app.add_option("--timeout", timeout, "Seconds to wait for an answer when nobody is there to judge")
        ->check(CLI::Range(1, longestTimeout))
        ->capture_default_str();
    app.set_version_flag("--version", "tavel-console " TAVEL_VERSION, "Print the version and exit");
    app.footer(footer());

    try {
        app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    } catch (const CLI::CallForHelp&) {
        return ConsoleUsage{0, app.help()};
    } catch (const CLI::CallForVersion& version) {
        return ConsoleUsage{0, std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return ConsoleUsage{usageStatus, std::string("tavel-console: ") + error.what() +
                                             "\nRun tavel-console --help for more information.\n"};
    }
    options.timeout = std::chrono::seconds(timeout);
    return options;
}

} // namespace tavel
