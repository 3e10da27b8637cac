#pragma once

#include "Linux/Panel/PanelReport.h"
#include "Linux/Panel/PanelRequest.h"
#include "Linux/Panel/Program/FrameExtents.h"
#include "Linux/Panel/Program/PanelWidgets.h"

#include <functional>
#include <string>

namespace tavel {

/// The panel on the screen, which is shown once. It reports what the user does, and never closes itself. GTK
/// has to be started.
class NamePanelWindow {
public:
    using Reporter = std::function<void(const PanelReport&)>;

    NamePanelWindow(const PanelStart& start, Reporter report);
    ~NamePanelWindow();
    NamePanelWindow(const NamePanelWindow&) = delete;
    NamePanelWindow& operator=(const NamePanelWindow&) = delete;

    ScreenSurroundings surroundings() const;

    /// The bottom left corner of the window with its frame.
    void setOrigin(ScreenPoint origin) const;

    /// Shows the window and asks for the keyboard focus, for the field.
    void show() const;

    void showHint(const std::string& hint) const;

private:
    static gboolean handleKey(GtkWidget*, GdkEventKey* event, gpointer self);
    static gboolean handleCloseButton(GtkWidget*, GdkEvent*, gpointer self);
    static void handleCancelButton(GtkButton*, gpointer self);
    static void handleConfirmButton(GtkButton*, gpointer self);

    bool isTakenByInputMethod(GdkEventKey* event) const;
    void confirm() const;
    void cancel() const;

    PanelWidgets widgets_;
    FrameExtents frame_;
    Reporter report_;
};

} // namespace tavel
