#pragma once

#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

/// The possible results of reading a typed line.
namespace wish {

struct Nothing {};

struct Help {};

/// The line is invalid. `explanation` tells the user why, and the correct form.
struct Mistake {
    std::string explanation;
};

/// A command for the agent. `Agent::send` sets its request number.
struct Request {
    std::string name; // the command's word as the user typed it
    ClipboardCommand command;
};

} // namespace wish

using Wish = std::variant<wish::Nothing, wish::Help, wish::Mistake, wish::Request>;

/// The directories to which "~" and relative paths in a line refer.
struct Places {
    std::filesystem::path workingDirectory;
    std::filesystem::path homeDirectory;

    static Places ofThisProcess();
};

Wish readHumanCommand(std::string_view line, const Places& places);

/// The text that `help` prints.
std::string humanCommandHelp();

} // namespace tavel
