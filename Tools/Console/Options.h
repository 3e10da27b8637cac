#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace tavel {

struct ConsoleOptions {
    std::optional<std::string> agent;      // the one next to this program without a path
    std::optional<std::string> pasteboard; // the general one without a name
    bool raw = false;
    bool demo = false;
    std::chrono::milliseconds patience{10'000}; // how long to wait for anything that must come
};

/// What a command line that asks for no session has to say: help on standard output with status 0, or a
/// mistake on standard error with status 2.
struct ConsoleUsage {
    int status;
    std::string text;
};

/// `arguments` without the program's own name.
std::variant<ConsoleOptions, ConsoleUsage> parseConsoleArguments(const std::vector<std::string>& arguments);

} // namespace tavel
