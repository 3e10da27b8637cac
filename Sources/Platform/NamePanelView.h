#pragma once

#include "Platform/ScreenGeometry.h"

#include <functional>
#include <string>
#include <string_view>

namespace tavel {

/// The texts of the naming panel.
struct NamePanelTexts {
    std::string title;
    std::string extensionLabel;
    std::string stem; // in the field, selected
    std::string cancelTitle;
    std::string confirmTitle;
};

/// What the user does. The actions throw nothing.
struct NamePanelActions {
    std::function<void()> confirm; // the confirming button, or Return
    std::function<void()> cancel;  // the other button, Escape, or the window's close button
};

/// The naming panel's window, laid out as NamePanelLayout.h says. It reports what the user does, and never
/// closes itself. Main thread only. An action that it calls may destroy it.
class NamePanelView {
public:
    virtual ~NamePanelView() = default;

    /// The screens and the pointer, for placing the window.
    virtual ScreenSurroundings surroundings() = 0;

    /// Moves the bottom left corner of the window, frame included.
    virtual void setOrigin(ScreenPoint origin) = 0;

    /// Shows the window and asks for the keyboard focus, for the field. Once only.
    virtual void show() = 0;

    /// Whether the user's keys reach the shown window. Always true where the platform grants what `show` asks
    /// for. Answers at once.
    virtual bool hasKeyboard() = 0;

    /// Asks once more for the keyboard focus, so that it is taken from another program even where the
    /// platform refuses that to a mere request. Takes effect later, if at all. Does nothing while the window
    /// is not shown.
    virtual void demandKeyboard() = 0;

    /// The field's text at the last confirmation, in UTF-8; the stem before the first.
    virtual std::string enteredText() = 0;

    virtual void showHint(std::string_view hint) = 0;

    /// Takes the window off the screen for good. No action is reported while it is not shown.
    virtual void hide() = 0;
};

} // namespace tavel
