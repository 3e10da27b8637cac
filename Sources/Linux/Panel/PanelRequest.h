#pragma once

#include "Platform/NamePanelView.h"
#include "Platform/ScreenGeometry.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

/// The first request, which makes a hidden window.
struct PanelStart {
    NamePanelTexts texts;
    pid_t process = 0; // whose window it is to be for other programs
};

struct PanelShow {};

struct PanelHint {
    std::string text;
};

/// What a program asks its panel for; a point is the origin, as in NamePanelView.
using PanelRequest = std::variant<PanelStart, ScreenPoint, PanelShow, PanelHint>;

/// The request as a line, with its line feed.
std::string lineOf(const PanelRequest& request);

/// The request of a line without its line feed; nothing if it is none.
std::optional<PanelRequest> panelRequestFrom(std::string_view line);

} // namespace tavel
