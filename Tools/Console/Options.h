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
    bool raw = false;
    bool demo = false;
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
