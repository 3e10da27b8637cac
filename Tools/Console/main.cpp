#include "Console/Demo.h"
#include "Console/Options.h"
#include "Console/Session.h"
#include "Doctor/Doctor.h"
#include "Platform/Platform.h"
#include "Support/Error.h"
#include "Support/Files.h"
#include "Support/Process.h"

#include <glib.h>
#include <langinfo.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

/// Input and output are UTF-8 even if the user's locale is not.
void useUtf8() {
    for (const char* const locale : {"", "C.UTF-8", "en_US.UTF-8"}) {
        if (std::setlocale(LC_CTYPE, locale) != nullptr && std::string_view(nl_langinfo(CODESET)) == "UTF-8")
            return;
    }
}

/// The directory of the running program, which was started as `programName`. Throws Error if it is unknown.
std::filesystem::path executableDirectory(const std::string& programName) {
    std::error_code error;
    // Only Linux has this link. Elsewhere look the name up along PATH, as shells do.
    const std::filesystem::path link = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error)
        return link.parent_path();
    const std::unique_ptr<gchar, decltype(&g_free)> found(g_find_program_in_path(programName.c_str()),
                                                          g_free);
    if (found != nullptr) {
        const std::filesystem::path path = std::filesystem::canonical(found.get(), error);
        if (!error)
            return path.parent_path();
    }
    throw tavel::Error("Tavel", 1, "The directory of this program cannot be found; use --agent.");
}

std::filesystem::path agentExecutable(const tavel::ConsoleOptions& options, const std::string& programName) {
    if (options.agent)
        return *options.agent;
    const std::filesystem::path directory = executableDirectory(programName);
    const std::filesystem::path installed =
        (directory / TAVEL_AGENT_FROM_TOOLS / "TavelClipboardAgent").lexically_normal();
    // In the tree of a build, both are in one directory.
    std::error_code ignored;
    return std::filesystem::exists(installed, ignored) ? installed : directory / "TavelClipboardAgent";
}

int play(const tavel::ConsoleOptions& options, const std::string& programName) {
    tavel::Demo(
        {agentExecutable(options, programName), executableDirectory(programName) / "tavel-pasteboard"},
        options.timeout)
        .run();
    return 0;
}

int run(const std::vector<std::string>& arguments, const std::string& programName) {
    const auto parsed = tavel::parseConsoleArguments(arguments);
    if (const auto* const usage = std::get_if<tavel::ConsoleUsage>(&parsed)) {
        const bool written = tavel::writeAll(usage->status == 0 ? STDOUT_FILENO : STDERR_FILENO, usage->text);
        return written ? usage->status : 1;
    }
    const auto& options = std::get<tavel::ConsoleOptions>(parsed);
    if (options.demo)
        return play(options, programName);
    if (options.doctor)
        return tavel::runDoctor(agentExecutable(options, programName), options.timeout);
    // The agent chooses in the same way: it has the same environment.
    const std::string clipboard = tavel::makePlatform()->describePasteboard(options.pasteboard);
    return tavel::Session(options, agentExecutable(options, programName), clipboard).run();
}

} // namespace

int main(int argc, char** argv) {
    tavel::reserveStandardDescriptors();
    useUtf8();
    std::signal(SIGPIPE, SIG_IGN); // the end of the agent is watched
    try {
        return run(std::vector<std::string>(argv + 1, argv + argc), argv[0]);
    } catch (const std::exception& error) {
        static_cast<void>(
            tavel::writeAll(STDERR_FILENO, std::string("tavel-console: ") + error.what() + "\n"));
        return 1;
    }
}
