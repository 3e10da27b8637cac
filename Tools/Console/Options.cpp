#include "Console/Options.h"

#include "Console/HumanCommand.h"

#include <CLI/CLI.hpp>
#include <utility>

namespace tavel {

namespace {

constexpr int usageStatus = 2;
constexpr int longestTimeout = 3600;
constexpr int highestSpeed = 1000;

std::string footer() {
    return "Commands, one per line:\n" + humanCommandHelp() +
           "\nThe exit status is 0 when the session came to its end, also by Ctrl-C, whatever became of the "
           "single\n"
           "commands; 1 when the agent could not be started, went away or did not answer, or when a reply "
           "was\n"
           "not as recorded; 2 for a wrong option.\n";
}

/// The doctor leaves the user's clipboard as it is, and shows nothing of it but types and sizes.
constexpr const char* doctorFooter =
    "It writes to a pasteboard of its own, and shows the types of what was copied, never the content.\n"
    "\n"
    "The exit status is 0 when all is well; 1 when the agent works, but something is missing or limited,\n"
    "which a list at the end names; 2 when the agent does not work at all, or for a wrong option.\n";

} // namespace

std::variant<ConsoleOptions, ConsoleUsage> parseConsoleArguments(const std::vector<std::string>& arguments) {
    CLI::App app(
        "Talks to the clipboard agent by hand: starts it, sends it what is typed, and shows what it says.",
        "tavel-console");
    ConsoleOptions options;
    int timeout = static_cast<int>(std::chrono::duration_cast<std::chrono::seconds>(options.timeout).count());
    app.add_option(
        "--agent", options.agent,
        "The agent's executable; without it the one that was installed or built with this program");
    CLI::Option* const pasteboard = app.add_option("--pasteboard", options.pasteboard,
                                                   "The pasteboard of that name instead of the general one");
    CLI::Option* const raw =
        app.add_flag("--raw", options.raw,
                     "Show the protocol's lines in both directions, and send lines that begin "
                     "with { as they are");
    CLI::Option* const trace =
        app.add_option("--trace", options.trace,
                       "Record the session with times in this new file, which only its user can read");
    CLI::Option* const replay = app.add_option(
        "--replay", options.replay, "Play the parent's half of a recorded session, and compare the replies");
    app.add_option("--speed", options.speed, "So many times as fast as the record")
        ->check(CLI::Range(1, highestSpeed))
        ->needs(replay)
        ->capture_default_str();
    CLI::Option* const demo =
        app.add_flag("--demo", options.demo,
                     "Play a short session on a private pasteboard, and check what happens")
            ->excludes(pasteboard)
            ->excludes(raw)
            ->excludes(trace)
            ->excludes(replay);
    app.add_option("--timeout", timeout, "Seconds to wait for an answer when nobody is there to judge")
        ->check(CLI::Range(1, longestTimeout))
        ->capture_default_str();
    app.set_version_flag("--version", "tavel-console " TAVEL_VERSION, "Print the version and exit");
    app.footer(footer());
    CLI::App* const doctor = app.add_subcommand(
        "doctor", "Examines what the agent needs on this machine, tries the agent, and says what is wrong");
    doctor->add_option("--agent", options.agent, "The agent's executable");
    doctor->add_option("--timeout", timeout, "Seconds to wait for each answer of the agent")
        ->check(CLI::Range(1, longestTimeout))
        ->capture_default_str();
    doctor->excludes(pasteboard)->excludes(raw)->excludes(trace)->excludes(replay)->excludes(demo);
    doctor->footer(doctorFooter);

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
    options.doctor = doctor->parsed();
    options.timeout = std::chrono::seconds(timeout);
    return options;
}

} // namespace tavel
