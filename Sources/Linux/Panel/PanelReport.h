#pragma once

#include "Platform/ScreenGeometry.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace tavel {

/// The answer to PanelStart: the window is there, and hidden.
struct PanelReady {
    ScreenSurroundings surroundings;
};

/// The user confirms this text.
struct PanelConfirmed {
    std::string text;
};

struct PanelCancelled {};

/// What a panel tells its program.
using PanelReport = std::variant<PanelReady, PanelConfirmed, PanelCancelled>;

/// The report as a line, with its line feed.
std::string lineOf(const PanelReport& report);

/// The report of a line without its line feed; nothing if it is none.
std::optional<PanelReport> panelReportFrom(std::string_view line);

} // namespace tavel
