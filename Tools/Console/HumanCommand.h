#pragma once

#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

/// What a typed line asks for.
namespace wish {

struct Nothing {};

struct Help {};

/// The line cannot be carried out. `explanation` says why and how to write it.
struct Mistake {
    std::string explanation;
};

/// A command for the agent, still without its number.
struct Request {
    std::string name; // the word that was typed
    ClipboardCommand command;
};

} // namespace wish

using Wish = std::variant<wish::Nothing, wish::Help, wish::Mistake, wish::Request>;

/// Where relative paths in a line start.
struct Places {
    std::filesystem::path workingDirectory;
    std::filesystem::path homeDirectory;

    static Places ofThisProcess();
};

Wish readHumanCommand(std::string_view line, const Places& places);

/// The answer to `help`.
std::string humanCommandHelp();

} // namespace tavel
