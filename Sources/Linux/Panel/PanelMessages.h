#pragma once

#include "Platform/NamePanelView.h"
#include "Platform/ScreenGeometry.h"

#include <sys/types.h>

#include <optional>
#include <string>
#include <string_view>
#include <variant>

/// The protocol between the agent and tavel-panel. The agent writes requests to the program's standard input
/// and reads reports from its standard output. A message is one line: a word and its fields, each after one
/// space. Numbers have the form of the C locale, whatever the process's locale is. Texts are in base64.
namespace tavel {

/// The first request. It makes the window, hidden, and is answered by PanelReady.
struct PanelStart {
    NamePanelTexts texts;
    pid_t process = 0; // other programs see the window as this process's
};

struct PanelShow {};

struct PanelHint {
    std::string text;
};

/// A request of the agent. A ScreenPoint is the window's origin, as in NamePanelView.
using PanelRequest = std::variant<PanelStart, ScreenPoint, PanelShow, PanelHint>;

/// The window exists and is hidden.
struct PanelReady {
    ScreenSurroundings surroundings;
};

/// The user confirmed this text.
struct PanelConfirmed {
    std::string text;
};

struct PanelCancelled {};

/// The user copied this text in the panel, whose process has put it on the clipboard and takes it along when
/// it ends.
struct PanelCopied {
    std::string text;
};

/// A report of the panel program.
using PanelReport = std::variant<PanelReady, PanelConfirmed, PanelCancelled, PanelCopied>;

/// The message as a line, with its line feed.
std::string lineOf(const PanelRequest& request);
std::string lineOf(const PanelReport& report);

/// Reads a line without its line feed; nullopt if it is malformed.
std::optional<PanelRequest> panelRequestFrom(std::string_view line);
std::optional<PanelReport> panelReportFrom(std::string_view line);

} // namespace tavel
