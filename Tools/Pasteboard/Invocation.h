#pragma once

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

/// The tasks of a command line. Types are identifiers; short names have been replaced.
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
    bool forced = false; // also writes to a terminal what is not text
};

struct PasteFiles {};

struct Types {};

struct Count {};

struct Clear {};

} // namespace task

using PasteboardTask = std::variant<task::Copy, task::CopyFiles, task::Set, task::Paste, task::PasteFiles,
                                    task::Types, task::Count, task::Clear>;

struct PasteboardInvocation {
    std::optional<std::string> pasteboard; // nullopt: the general pasteboard
    PasteboardTask task;
};

/// The answer to a command line without a task: help or the version, for standard output with status 0, or a
/// mistake, for standard error with status 2.
struct PasteboardUsage {
    int status;
    std::string text;
};

/// `arguments` does not include the program's name.
std::variant<PasteboardInvocation, PasteboardUsage>
parsePasteboardArguments(const std::vector<std::string>& arguments);

} // namespace tavel
