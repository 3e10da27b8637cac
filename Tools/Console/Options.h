#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

struct ConsoleOptions {
    std::optional<std::string> agent;      // nullopt: the one beside this program
    std::optional<std::string> pasteboard; // nullopt: the general one
    std::optional<std::string> trace;      // the file to record the session in
    std::optional<std::string> replay;     // the record to play
    int speed = 1;                         // of a record, as a multiple of its own
    bool raw = false;
    bool demo = false;
    bool doctor = false;                       // examine the surroundings instead of a session
    std::chrono::milliseconds timeout{10'000}; // of each reply and each step
};

/// The answer to a command line that starts no session: help or the version for standard output with status
/// 0, or an error for standard error with status 2.
struct ConsoleUsage {
    int status;
    std::string text;
};

/// `arguments` must not include the program's name.
std::variant<ConsoleOptions, ConsoleUsage> parseConsoleArguments(const std::vector<std::string>& arguments);

} // namespace tavel
