#include "Linux/Panel/Program/ReadableColour.h"

#include <algorithm>
#include <cmath>

namespace tavel {

namespace {

constexpr double leastContrast = 4.5;

double linear(double channel) {
    return channel <= 0.04045 ? channel / 12.92 : std::pow((channel + 0.055) / 1.055, 2.4);
}

double luminance(const GdkRGBA& colour) {
    return 0.2126 * linear(colour.red) + 0.7152 * linear(colour.green) + 0.0722 * linear(colour.blue);
}

double contrast(const GdkRGBA& first, const GdkRGBA& second) {
    const auto [darker, lighter] = std::minmax({luminance(first), luminance(second)});
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace

std::optional<GdkRGBA> readableErrorColour(GtkWidget* window) {
    GtkStyleContext* const style = gtk_widget_get_style_context(window);
    GdkRGBA error{};
    GdkRGBA background{};
    if (gtk_style_context_lookup_color(style, "error_color", &error) == FALSE ||
        gtk_style_context_lookup_color(style, "theme_bg_color", &background) == FALSE ||
        contrast(error, background) < leastContrast)
        return std::nullopt;
    return error;
}

} // namespace tavel
