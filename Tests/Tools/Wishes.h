#pragma once

#include "Console/HumanCommand.h"
#include "Tests/Unit/Fixtures/PrintJson.h"

#include <string>

namespace tavel {

/// The fields of the request that a typed line led to.
inline nlohmann::json requestIn(Wish wish) {
    auto* const request = std::get_if<Request>(&wish);
    if (request == nullptr)
        return "no request";
    const std::string text = request->fields.takeLine();
    return nlohmann::json::parse(text);
}

/// What was wrong with a typed line.
inline std::string mistakeIn(const Wish& wish) {
    const auto* const mistake = std::get_if<wish::Mistake>(&wish);
    return mistake != nullptr ? mistake->explanation : "no mistake";
}

} // namespace tavel
