#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tavel {

/// The window behind the naming panel: it shows, and reports what the user did. Main thread only.
class NamePanelView {
public:
    struct Actions {
        std::function<void()> confirm; // the confirming button, or Return
        std::function<void()> cancel;  // the other button, Escape, or the window's close button
    };

    virtual ~NamePanelView() = default;

    /// Shows the window with `stem` selected in its field, asks for the keyboard focus, and from then on
    /// reports actions. False if no window can be shown here; no action is then reported.
    virtual bool show(std::string_view stem, std::string_view extensionLabel, Actions actions) = 0;

    /// What the field holds.
    virtual std::string enteredText() = 0;

    virtual void showHint(std::string_view hint) = 0;

    /// Takes the window off the screen. No action is reported afterwards.
    virtual void hide() = 0;
};

} // namespace tavel
