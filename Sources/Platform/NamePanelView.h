#pragma once

#include "Platform/ScreenGeometry.h"

#include <functional>
#include <string>
#include <string_view>

namespace tavel {

/// What stands in the naming panel.
struct NamePanelTexts {
    std::string title;
    std::string extensionLabel;
    std::string stem; // in the field, selected
    std::string cancelTitle;
    std::string confirmTitle;
};

struct NamePanelActions {
    std::function<void()> confirm; // the confirming button, or Return
    std::function<void()> cancel;  // the other button, Escape, or the window's close button
};

/// The window behind the naming panel: it shows, and reports what the user did. It is laid out as
/// NamePanelLayout.h says, and never closes itself. Main thread only. It may be destroyed by an action that
/// it reports.
class NamePanelView {
public:
    virtual ~NamePanelView() = default;

    /// Where the window could stand.
    virtual ScreenSurroundings surroundings() = 0;

    /// The bottom left corner of the window with its frame.
    virtual void setOrigin(ScreenPoint origin) = 0;

    /// Shows the window and asks for the keyboard focus, for the field. Once only.
    virtual void show() = 0;

    /// What the field held when it was confirmed last, in UTF-8; the stem before that.
    virtual std::string enteredText() = 0;

    virtual void showHint(std::string_view hint) = 0;

    /// Takes the window off the screen for good. No action is reported while it is not shown.
    virtual void hide() = 0;
};

} // namespace tavel
