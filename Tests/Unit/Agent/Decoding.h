#pragma once

#include "TavelClipboardAgent/main/Protocol/CommandDecoder.h"
#include "Tests/Unit/Agent/TestLine.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

inline std::optional<ClipboardCommand> decodeLine(std::string_view text) {
    CommandDecoder decoder;
    TestLine line(text);
    return decoder.decode(line.line());
}

inline bool isDropped(std::string_view text) {
    return !decodeLine(text).has_value();
}

/// nullopt unless the line is a command of that type.
template <typename Command>
std::optional<Command> decodeLineAs(std::string_view text) {
    const auto command = decodeLine(text);
    const Command* const one = command ? std::get_if<Command>(&*command) : nullptr;
    return one == nullptr ? std::nullopt : std::optional(*one);
}

/// A command line with the request identifier 7. `members` is empty or begins with a comma: `,"key":value`.
inline std::string commandLine(std::string_view name, std::string_view members = {}) {
    return R"({"command":")" + std::string(name) + R"(","request_id":7)" + std::string(members) + "}";
}

} // namespace tavel
