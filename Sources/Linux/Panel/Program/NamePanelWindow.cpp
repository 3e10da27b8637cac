#include "Linux/Panel/Program/NamePanelWindow.h"

#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <gdk/gdkx.h>

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

const NamePanelWindow& panel(gpointer self) {
    return *static_cast<const NamePanelWindow*>(self);
}

bool isConfirmingKey(const GdkEventKey& event) {
    const bool isReturn = event.keyval == GDK_KEY_Return || event.keyval == GDK_KEY_KP_Enter ||
                          event.keyval == GDK_KEY_ISO_Enter;
    return isReturn && (event.state & gtk_accelerator_get_default_mod_mask()) == 0;
}

bool isCancellingKey(const GdkEventKey& event) {
    const guint modifiers = event.state & gtk_accelerator_get_default_mod_mask();
    if (event.keyval == GDK_KEY_Escape)
        return modifiers == 0;
    // On some keyboards the full stop needs Shift.
    return event.keyval == GDK_KEY_period && (modifiers & ~guint{GDK_SHIFT_MASK}) == GDK_CONTROL_MASK;
}

Display* displayOf(GdkWindow* window) {
    return gdk_x11_display_get_xdisplay(gdk_window_get_display(window));
}

/// Other programs take the window for that of the agent, which recognises it as its own. GDK has set the
/// identifier of this process.
void setProcess(GdkWindow* window, pid_t process) {
    const long value = process; // Xlib takes 32-bit values as long
    XChangeProperty(displayOf(window), gdk_x11_window_get_xid(window),
                    gdk_x11_get_xatom_by_name("_NET_WM_PID"), XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(&value), 1);
}

/// A window manager may kill the process of a window that does not answer pings. Here that would be the
/// agent.
void removePingProtocol(GdkWindow* window) {
    Atom* protocols = nullptr;
    int count = 0;
    if (XGetWMProtocols(displayOf(window), gdk_x11_window_get_xid(window), &protocols, &count) == 0)
        return;
    Atom* const end = std::remove(protocols, protocols + count, gdk_x11_get_xatom_by_name("_NET_WM_PING"));
    XSetWMProtocols(displayOf(window), gdk_x11_window_get_xid(window), protocols,
                    static_cast<int>(end - protocols));
    XFree(protocols);
}

} // namespace

NamePanelWindow::NamePanelWindow(const PanelStart& start, Reporter report)
    : widgets_(makePanelWidgets(start.texts)), frame_(frameExtents(gtk_widget_get_window(widgets_.window))),
      report_(std::move(report)) {
    setProcess(gtk_widget_get_window(widgets_.window), start.process);
    removePingProtocol(gtk_widget_get_window(widgets_.window));
    g_signal_connect(widgets_.window, "key-press-event", G_CALLBACK(handleKey), this);
    g_signal_connect(widgets_.window, "delete-event", G_CALLBACK(handleCloseButton), this);
    // Cutting removes the selection, so it is noted before.
    for (const char* const copying : {"copy-clipboard", "cut-clipboard"}) {
        g_signal_connect(widgets_.field, copying, G_CALLBACK(noteSelection), this);
        g_signal_connect_after(widgets_.field, copying, G_CALLBACK(handleCopy), this);
    }
    g_signal_connect(widgets_.cancelButton, "clicked", G_CALLBACK(handleCancelButton), this);
    g_signal_connect(widgets_.confirmButton, "clicked", G_CALLBACK(handleConfirmButton), this);
}

NamePanelWindow::~NamePanelWindow() {
    gtk_widget_destroy(widgets_.window);
}

ScreenSurroundings NamePanelWindow::surroundings() const {
    GdkDisplay* const display = gtk_widget_get_display(widgets_.window);
    return {pointerPlace(display), screensOf(display), framedPanelSize(frame_)};
}

void NamePanelWindow::setOrigin(ScreenPoint origin) const {
    const WindowPlace place = topLeftOf(origin, frame_);
    gtk_window_move(GTK_WINDOW(widgets_.window), place.x, place.y);
}

void NamePanelWindow::show() const {
    gtk_widget_grab_focus(widgets_.field);
    gtk_editable_select_region(GTK_EDITABLE(widgets_.field), 0, -1);
    // Window managers refuse the focus to a window whose user time is older than that of the active window.
    // This process has received no user event, so it takes the server's present time.
    GdkWindow* const window = gtk_widget_get_window(widgets_.window);
    const guint32 now = gdk_x11_get_server_time(window);
    gdk_x11_window_set_user_time(window, now);
    gtk_window_present_with_time(GTK_WINDOW(widgets_.window), now);
}

gboolean NamePanelWindow::handleKey(GtkWidget*, GdkEventKey* event, gpointer self) {
    const bool isConfirming = isConfirmingKey(*event);
    if (!isConfirming && !isCancellingKey(*event))
        return GDK_EVENT_PROPAGATE;
    if (panel(self).isTakenByInputMethod(event))
        return GDK_EVENT_STOP;
    // Return confirms even when the cancel button has the focus. The space bar presses that button.
    if (isConfirming)
        panel(self).confirm();
    else
        panel(self).cancel();
    return GDK_EVENT_STOP;
}

gboolean NamePanelWindow::handleCloseButton(GtkWidget*, GdkEvent*, gpointer self) {
    panel(self).cancel();
    return GDK_EVENT_STOP;
}

void NamePanelWindow::handleCancelButton(GtkButton*, gpointer self) {
    panel(self).cancel();
}

void NamePanelWindow::handleConfirmButton(GtkButton*, gpointer self) {
    panel(self).confirm();
}

void NamePanelWindow::noteSelection(GtkEntry* field, gpointer self) {
    int start = 0;
    int end = 0;
    gtk_editable_get_selection_bounds(GTK_EDITABLE(field), &start, &end);
    char* const text = gtk_editable_get_chars(GTK_EDITABLE(field), start, end);
    static_cast<NamePanelWindow*>(self)->copied_ = text;
    g_free(text);
}

/// Without a selection, nothing is copied. The report comes after the X server knows this process as the
/// owner, so that whoever then takes the clipboard over is the later owner.
void NamePanelWindow::handleCopy(GtkEntry* field, gpointer self) {
    const std::string& text = panel(self).copied_;
    if (text.empty())
        return;
    gdk_display_sync(gtk_widget_get_display(GTK_WIDGET(field)));
    panel(self).report_(PanelCopied{text});
}

/// Whether the input method uses the key: while text is composed, Return accepts it and Escape discards it.
bool NamePanelWindow::isTakenByInputMethod(GdkEventKey* event) const {
    return gtk_widget_has_focus(widgets_.field) != FALSE &&
           gtk_entry_im_context_filter_keypress(GTK_ENTRY(widgets_.field), event) != FALSE;
}

void NamePanelWindow::confirm() const {
    report_(PanelConfirmed{gtk_entry_get_text(GTK_ENTRY(widgets_.field))});
}

void NamePanelWindow::cancel() const {
    report_(PanelCancelled{});
}

} // namespace tavel
