#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

/// What the command line asks for. Types are identifiers: short names have been replaced.
namespace task {

struct Copy {
    std::string file; // "-" for standard input
    std::string type;
};

struct CopyFiles {
    std::vector<std::string> paths; // as they were given
};

struct Set {
    struct Source {
        std::string type;
        std::string file; // "-" for standard input
    };

    std::vector<Source> sources;
};

struct Paste {
    std::string type;
    bool forced = false; // what is no text goes to a terminal, too
};

struct PasteFiles {};

struct Types {};

struct Count {};

struct Clear {};

} // namespace task

using PasteboardTask = std::variant<task::Copy, task::CopyFiles, task::Set, task::Paste, task::PasteFiles,
                                    task::Types, task::Count, task::Clear>;

struct PasteboardInvocation {
    std::optional<std::string> pasteboard; // the general one without a name
    PasteboardTask task;
};

/// What a command line that does not lead to a task has to say: help on standard output with status 0, or a
/// mistake on standard error with status 2.
struct PasteboardUsage {
    int status;
    std::string text;
};

/// `arguments` without the program's own name.
std::variant<PasteboardInvocation, PasteboardUsage>
parsePasteboardArguments(const std::vector<std::string>& arguments);

} // namespace tavel
