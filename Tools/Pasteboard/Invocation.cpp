#include "Pasteboard/Invocation.h"

#include "Pasteboard/Input.h"
#include "Pasteboard/TypeNames.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <utility>

namespace tavel {

namespace {

constexpr int usageStatus = 2;

/// CLI11 splits a value in square brackets as a list, although it can be a file name. This character before
/// the bracket prevents that.
constexpr char bracketGuard = '\x01';

std::string guarded(const std::string& argument) {
    return argument.starts_with('[') ? bracketGuard + argument : argument;
}

std::string unguarded(std::string text) {
    if (text.starts_with(std::string{bracketGuard, '['}))
        text.erase(0, 1);
    return text;
}

/// The values that CLI11 parses.
struct Values {
    std::string pasteboard;
    std::optional<std::string> copiedType; // nullopt: from the file's name
    std::string pastedType = "text";
    bool forced = false;
    std::string file = standardInputName;
    std::vector<std::string> paths;
    std::vector<std::string> assignments;
};

std::string checkAssignment(const std::string& text) {
    const std::size_t equals = text.find('=');
    const bool complete = equals != std::string::npos && equals > 0 && equals + 1 < text.size();
    return complete ? std::string() : "'" + text + "' is not of the form TYPE=FILE";
}

void addWritingCommands(CLI::App& app, Values& values) {
    CLI::App* const copy =
        app.add_subcommand("copy", "Put a file's content, or standard input, on the pasteboard");
    copy->add_option("FILE", values.file, "The file; standard input without it, and for -");
    copy->add_option("--type", values.copiedType,
                     "The type of the content; without it what the file's name ends in (.png, .jpg, .html "
                     "and so on) says it, and everything else is text");

    CLI::App* const copyFiles = app.add_subcommand("copy-files", "Put references to files on the pasteboard");
    copyFiles->add_option("PATH", values.paths, "Files and directories; they must exist")->required();

    CLI::App* const set = app.add_subcommand("set", "Put one thing in several types on the pasteboard");
    set->add_option("TYPE=FILE", values.assignments, "A type and the file with its content")
        ->required()
        ->check(checkAssignment, "a type and a file");

    app.add_subcommand("clear", "Remove everything from the pasteboard");
}

void addReadingCommands(CLI::App& app, Values& values) {
    CLI::App* const paste =
        app.add_subcommand("paste", "Write what is on the pasteboard to standard output, as it is");
    paste->add_option("--type", values.pastedType, "The wanted type")->capture_default_str();
    paste->add_flag("--force", values.forced, "Write to a terminal even what is not text");
    app.add_subcommand("paste-files", "List the paths of the files on the pasteboard, one per line");
    app.add_subcommand("types", "List the types on the pasteboard, one per line");
    app.add_subcommand("count", "Tell the change count, which moves with every new content");
}

task::Copy copyTask(const Values& values) {
    std::string file = unguarded(values.file);
    std::string type =
        values.copiedType ? typeIdentifier(unguarded(*values.copiedType)) : typeIdentifierForFile(file);
    return {std::move(file), std::move(type)};
}

task::CopyFiles copyFilesTask(const std::vector<std::string>& paths) {
    task::CopyFiles copy;
    std::ranges::transform(paths, std::back_inserter(copy.paths), unguarded);
    return copy;
}

task::Set setTask(const std::vector<std::string>& assignments) {
    task::Set set;
    for (const std::string& guardedOne : assignments) {
        const std::string one = unguarded(guardedOne);
        const std::size_t equals = one.find('=');
        set.sources.push_back({typeIdentifier(one.substr(0, equals)), one.substr(equals + 1)});
    }
    return set;
}

PasteboardTask taskFrom(const CLI::App& app, const Values& values) {
    const std::string name = app.get_subcommands().front()->get_name();
    if (name == "copy")
        return copyTask(values);
    if (name == "copy-files")
        return copyFilesTask(values.paths);
    if (name == "set")
        return setTask(values.assignments);
    if (name == "paste")
        return task::Paste{typeIdentifier(unguarded(values.pastedType)), values.forced};
    if (name == "paste-files")
        return task::PasteFiles{};
    if (name == "types")
        return task::Types{};
    if (name == "count")
        return task::Count{};
    return task::Clear{};
}

std::string mistakeIn(const task::Set& set) {
    for (auto one = set.sources.begin(); one != set.sources.end(); ++one) {
        const auto same = [one](const task::Set::Source& other) { return other.type == one->type; };
        if (std::any_of(set.sources.begin(), one, same))
            return "the type " + one->type + " is given twice";
    }
    if (std::ranges::count(set.sources, standardInputName, &task::Set::Source::file) > 1)
        return "only one type can come from standard input";
    return {};
}

/// A mistake that CLI11 cannot detect; empty if there is none.
std::string mistakeIn(const PasteboardTask& task) {
    if (const auto* const set = std::get_if<task::Set>(&task))
        return mistakeIn(*set);
    const auto* const copy = std::get_if<task::Copy>(&task);
    const auto* const paste = std::get_if<task::Paste>(&task);
    if ((copy != nullptr && copy->type.empty()) || (paste != nullptr && paste->type.empty()))
        return "--type needs a name";
    return {};
}

PasteboardUsage usageMistake(std::string what) {
    std::erase(what, bracketGuard); // an argument may be quoted in it
    return {usageStatus,
            "tavel-pasteboard: " + what + "\nRun tavel-pasteboard --help for more information.\n"};
}

} // namespace

std::variant<PasteboardInvocation, PasteboardUsage>
parsePasteboardArguments(const std::vector<std::string>& arguments) {
    CLI::App app("Copies and pastes like an application, on the pasteboard that the clipboard agent watches.",
                 "tavel-pasteboard");
    Values values;
    app.fallthrough();
    // At most one, so that a file may have the name of a command. A missing command is reported below,
    // because CLI11 would report it for an unknown command too.
    app.require_subcommand(0, 1);
    CLI::Option* const pasteboard = app.add_option("--pasteboard", values.pasteboard,
                                                   "The pasteboard of that name instead of the general one");
    app.set_version_flag("--version", "tavel-pasteboard " TAVEL_VERSION, "Print the version and exit");
    addWritingCommands(app, values);
    addReadingCommands(app, values);
    app.footer("Short names for types; every other name is taken for the type's identifier:\n" +
               typeNameTable());

    try {
        std::vector<std::string> backwards; // as CLI11 wants them
        std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(backwards), guarded);
        app.parse(std::move(backwards));
    } catch (const CLI::CallForHelp&) {
        return PasteboardUsage{0, app.help()};
    } catch (const CLI::CallForVersion& version) {
        return PasteboardUsage{0, std::string(version.what()) + "\n"};
    } catch (const CLI::ParseError& error) {
        return usageMistake(error.what());
    }

    if (app.get_subcommands().empty())
        return usageMistake("a command is required");
    PasteboardInvocation invocation{std::nullopt, taskFrom(app, values)};
    if (pasteboard->count() > 0)
        invocation.pasteboard = unguarded(values.pasteboard);
    if (const std::string mistake = mistakeIn(invocation.task); !mistake.empty())
        return usageMistake(mistake);
    return invocation;
}

} // namespace tavel
