#include "Linux/Panel/Program/PanelWidgets.h"

#include "Platform/NamePanelLayout.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace tavel {

namespace {

constexpr int contentWidth = static_cast<int>(namePanelLayout::content.width);
constexpr int contentHeight = static_cast<int>(namePanelLayout::content.height);

/// In characters. More than any file system allows, and short enough for one report.
constexpr int longestName = 4096;

/// Without this, themes make fields and buttons higher than the layout's frames, mostly with padding.
constexpr const char* tightStyle = "entry { min-height: 0; padding-top: 0; padding-bottom: 0; }"
                                   "button { min-height: 0; min-width: 0; padding: 0 4px; }";

GtkWidget* makeWindow(const NamePanelTexts& texts) {
    GtkWidget* const widget = gtk_window_new(GTK_WINDOW_TOPLEVEL);
    GtkWindow* const window = GTK_WINDOW(widget);
    gtk_window_set_title(window, texts.title.c_str());
    gtk_window_set_type_hint(window, GDK_WINDOW_TYPE_HINT_DIALOG);
    gtk_window_set_resizable(window, FALSE);
    gtk_window_set_keep_above(window, TRUE);
    gtk_window_set_skip_taskbar_hint(window, TRUE);
    // gtk_window_move then places the corner of the frame.
    gtk_window_set_gravity(window, GDK_GRAVITY_NORTH_WEST);
    return widget;
}

GtkWidget* makeLabel(const char* text, float verticalAlignment) {
    GtkWidget* const widget = gtk_label_new(text);
    gtk_label_set_xalign(GTK_LABEL(widget), 0);
    gtk_label_set_yalign(GTK_LABEL(widget), verticalAlignment);
    gtk_label_set_ellipsize(GTK_LABEL(widget), PANGO_ELLIPSIZE_END);
    // Otherwise a long text would widen the window.
    gtk_label_set_max_width_chars(GTK_LABEL(widget), 1);
    return widget;
}

GtkWidget* makeHint() {
    GtkWidget* const widget = makeLabel("", 0);
    gtk_label_set_line_wrap(GTK_LABEL(widget), TRUE);
    gtk_label_set_lines(GTK_LABEL(widget), 2);
    return widget;
}

GtkWidget* makeField(const NamePanelTexts& texts) {
    GtkWidget* const widget = gtk_entry_new();
    gtk_entry_set_max_length(GTK_ENTRY(widget), longestName);
    gtk_entry_set_text(GTK_ENTRY(widget), texts.stem.c_str());
    gtk_entry_set_activates_default(GTK_ENTRY(widget), TRUE);
    // The field has no label of its own, so screen readers need a name.
    atk_object_set_name(gtk_widget_get_accessible(widget), texts.title.c_str());
    return widget;
}

void tighten(GtkWidget* widget) {
    GtkCssProvider* const provider = gtk_css_provider_new();
    gtk_css_provider_load_from_data(provider, tightStyle, -1, nullptr);
    gtk_style_context_add_provider(gtk_widget_get_style_context(widget), GTK_STYLE_PROVIDER(provider),
                                   GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
    g_object_unref(provider);
}

void place(GtkWidget* content, GtkWidget* widget, const ScreenRectangle& frame) {
    tighten(widget);
    gtk_widget_set_size_request(widget, static_cast<int>(frame.width), static_cast<int>(frame.height));
    gtk_fixed_put(GTK_FIXED(content), widget, static_cast<int>(frame.x),
                  contentHeight - static_cast<int>(frame.y + frame.height));
}

/// Sets the size hints now: GTK sets them only when it shows the window, but the frame depends on them.
void realizeWithSizeHints(GtkWidget* window) {
    gtk_widget_realize(window);
    GdkGeometry sizes{};
    sizes.min_width = sizes.max_width = contentWidth;
    sizes.min_height = sizes.max_height = contentHeight;
    sizes.win_gravity = GDK_GRAVITY_NORTH_WEST;
    gdk_window_set_geometry_hints(
        gtk_widget_get_window(window), &sizes,
        static_cast<GdkWindowHints>(GDK_HINT_MIN_SIZE | GDK_HINT_MAX_SIZE | GDK_HINT_WIN_GRAVITY));
}

constexpr double leastContrast = 4.5; // WCAG 2.1, 1.4.3

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

/// The theme's colour for errors, if text in that colour is readable on the window's background. nullopt if
/// not, or if the theme does not define both colours.
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

} // namespace

PanelWidgets makePanelWidgets(const NamePanelTexts& texts) {
    PanelWidgets widgets{};
    widgets.window = makeWindow(texts);
    widgets.field = makeField(texts);
    widgets.hint = makeHint();
    widgets.cancelButton = gtk_button_new_with_label(texts.cancelTitle.c_str());
    widgets.confirmButton = gtk_button_new_with_label(texts.confirmTitle.c_str());

    GtkWidget* const content = gtk_fixed_new();
    gtk_widget_set_size_request(content, contentWidth, contentHeight);
    // The Tab key follows this order.
    place(content, makeLabel(texts.extensionLabel.c_str(), 0.5F), namePanelLayout::extensionLabel);
    place(content, widgets.field, namePanelLayout::field);
    place(content, widgets.hint, namePanelLayout::hint);
    place(content, widgets.cancelButton, namePanelLayout::cancelButton);
    place(content, widgets.confirmButton, namePanelLayout::confirmButton);
    gtk_container_add(GTK_CONTAINER(widgets.window), content);
    gtk_widget_show_all(content);

    gtk_widget_set_can_default(widgets.confirmButton, TRUE);
    gtk_window_set_default(GTK_WINDOW(widgets.window), widgets.confirmButton);
    gtk_style_context_add_class(gtk_widget_get_style_context(widgets.confirmButton),
                                GTK_STYLE_CLASS_SUGGESTED_ACTION);
    realizeWithSizeHints(widgets.window);
    return widgets;
}

void setHint(const PanelWidgets& widgets, const std::string& hint) {
    PangoAttrList* const attributes = pango_attr_list_new();
    if (const auto colour = readableErrorColour(widgets.window)) {
        const auto channel = [](double value) { return static_cast<guint16>(value * 0xFFFF); };
        pango_attr_list_insert(
            attributes,
            pango_attr_foreground_new(channel(colour->red), channel(colour->green), channel(colour->blue)));
    }
    gtk_label_set_attributes(GTK_LABEL(widgets.hint), attributes);
    pango_attr_list_unref(attributes);
    gtk_label_set_text(GTK_LABEL(widgets.hint), hint.c_str());
}

} // namespace tavel
