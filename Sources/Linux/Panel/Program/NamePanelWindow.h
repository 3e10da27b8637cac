#pragma once

#include "Linux/Panel/PanelMessages.h"
#include "Linux/Panel/Program/PanelWidgets.h"
#include "Linux/Panel/Program/WindowPlacement.h"

#include <functional>
#include <string>

namespace tavel {

/// The panel's window, which is shown once. It reports the user's actions and never closes itself. GTK must
/// be initialised. Main thread only.
class NamePanelWindow {
public:
    using Reporter = std::function<void(const PanelReport&)>;

    NamePanelWindow(const PanelStart& start, Reporter report);
    ~NamePanelWindow();
    NamePanelWindow(const NamePanelWindow&) = delete;
    NamePanelWindow& operator=(const NamePanelWindow&) = delete;

    ScreenSurroundings surroundings() const;

    /// Moves the bottom left corner of the window's frame there.
    void setOrigin(ScreenPoint origin) const;

    /// Shows the window and requests the keyboard focus for the field.
    void show() const;

    void showHint(const std::string& hint) const { setHint(widgets_, hint); }

private:
    static gboolean handleKey(GtkWidget*, GdkEventKey* event, gpointer self);
    static gboolean handleCloseButton(GtkWidget*, GdkEvent*, gpointer self);
    static void handleCancelButton(GtkButton*, gpointer self);
    static void handleConfirmButton(GtkButton*, gpointer self);
    static void noteSelection(GtkEntry* field, gpointer self);
    static void handleCopy(GtkEntry* field, gpointer self);

    bool isTakenByInputMethod(GdkEventKey* event) const;
    void confirm() const;
    void cancel() const;

    PanelWidgets widgets_;
    FrameExtents frame_;
    Reporter report_;
    std::string copied_; // the text that is being copied
};

} // namespace tavel
