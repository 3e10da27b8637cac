#pragma once

#include "Platform/NamePanelView.h"

#include <gtk/gtk.h>

namespace tavel {

/// What the panel consists of. All of it goes with the window, which is GTK's until it is destroyed.
struct PanelWidgets {
    GtkWidget* window;
    GtkWidget* field;
    GtkWidget* hint;
    GtkWidget* cancelButton;
    GtkWidget* confirmButton;
};

/// Makes the panel: hidden, but known to the X server with all that a window manager goes by.
PanelWidgets makePanelWidgets(const NamePanelTexts& texts);

} // namespace tavel
