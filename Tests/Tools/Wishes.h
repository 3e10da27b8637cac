#pragma once

#include "Console/HumanCommand.h"
#include "TavelClipboardAgent/main/Protocol/Encoder.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <optional>
#include <string>
#include <variant>

namespace tavel {

/// The JSON of the command that a typed line asks for, without its number.
inline nlohmann::json requestIn(const Wish& wish) {
    const auto* const request = std::get_if<wish::Request>(&wish);
    const auto line = request != nullptr ? encodeCommand(request->command) : std::nullopt;
    if (!line)
        return "no request";
    nlohmann::json fields = nlohmann::json::parse(*line);
    fields.erase("request_id");
    return fields;
}

/// Why a typed line was refused.
inline std::string mistakeIn(const Wish& wish) {
    const auto* const mistake = std::get_if<wish::Mistake>(&wish);
    return mistake != nullptr ? mistake->explanation : "no mistake";
}

} // namespace tavel
