#pragma once

#include <gtk/gtk.h>

#include <optional>

namespace tavel {

/// The theme's colour for errors, unless text in it would be hard to read on that window: the contrast has to
/// be 4.5 to 1 (WCAG 2.1, 1.4.3). Nothing as well if the theme names no such colours.
std::optional<GdkRGBA> readableErrorColour(GtkWidget* window);

} // namespace tavel
