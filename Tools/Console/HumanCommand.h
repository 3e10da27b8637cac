#pragma once

#include "TavelClipboardAgent/main/Protocol/ClipboardCommand.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

/// What a person wants with a line.
namespace wish {

struct Nothing {};

struct Help {};

/// The line cannot be carried out; `explanation` says why and what would do.
struct Mistake {
    std::string explanation;
};

/// A command for the agent, which lacks only its number.
struct Request {
    std::string name; // the word that was typed
    ClipboardCommand command;
};

} // namespace wish

using Wish = std::variant<wish::Nothing, wish::Help, wish::Mistake, wish::Request>;

/// The places that paths in a line are relative to.
struct Places {
    std::filesystem::path workingDirectory;
    std::filesystem::path homeDirectory;

    static Places ofThisProcess();
};

Wish readHumanCommand(std::string_view line, const Places& places);

/// What `help` answers.
std::string_view humanCommandHelp();

} // namespace tavel
