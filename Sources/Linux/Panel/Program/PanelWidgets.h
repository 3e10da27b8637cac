#pragma once

#include "Platform/NamePanelView.h"

#include <gtk/gtk.h>

#include <string>

namespace tavel {

/// The widgets of the panel. GTK owns them; destroying the window destroys all of them.
struct PanelWidgets {
    GtkWidget* window;
    GtkWidget* field;
    GtkWidget* hint;
    GtkWidget* cancelButton;
    GtkWidget* confirmButton;
};

/// Makes the panel, hidden. Its window exists on the X server, with the type and the size hints that window
/// managers read.
PanelWidgets makePanelWidgets(const NamePanelTexts& texts);

/// Shows the hint below the field: in the theme's colour for errors where that is readable, in the usual
/// colour of text elsewhere.
void setHint(const PanelWidgets& widgets, const std::string& hint);

} // namespace tavel
