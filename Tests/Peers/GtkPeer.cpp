#include "Tests/Peers/Peer.h"

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <stdexcept>
#include <utility>

namespace tavel {

namespace {

struct GlibFree {
    void operator()(void* memory) const { g_free(memory); }
};
struct StringsFree {
    void operator()(char** strings) const { g_strfreev(strings); }
};
struct ObjectUnref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
struct SelectionDataFree {
    void operator()(GtkSelectionData* data) const { gtk_selection_data_free(data); }
};
struct TargetListUnref {
    void operator()(GtkTargetList* list) const { gtk_target_list_unref(list); }
};

using String = std::unique_ptr<char, GlibFree>;
using Strings = std::unique_ptr<char*, StringsFree>;
using Pixbuf = std::unique_ptr<GdkPixbuf, ObjectUnref>;
using SelectionData = std::unique_ptr<GtkSelectionData, SelectionDataFree>;
using TargetList = std::unique_ptr<GtkTargetList, TargetListUnref>;

GdkAtom atom(const std::string& name) {
    return gdk_atom_intern(name.c_str(), FALSE);
}

[[noreturn]] void fail(const std::string& what, GError* error) {
    const std::string reason = error != nullptr ? error->message : "unknown reason";
    g_clear_error(&error);
    throw std::runtime_error(what + ": " + reason);
}

/// The kind of data that a target delivers. Each target carries its kind as GTK's "info" value.
enum Group : guint { Text, Html, Files, Raw };

struct Offer {
    std::string text;
    std::string bytes; // HTML, or data of the peer's own type
    std::vector<std::string> paths;
};

void setBytes(GtkSelectionData* selection, const std::string& bytes) {
    gtk_selection_data_set(selection, gtk_selection_data_get_target(selection), 8,
                           reinterpret_cast<const guchar*>(bytes.data()), static_cast<gint>(bytes.size()));
}

void setFiles(GtkSelectionData* selection, const std::vector<std::string>& paths) {
    Strings uris(g_new0(char*, paths.size() + 1));
    for (std::size_t i = 0; i < paths.size(); ++i)
        uris.get()[i] = g_filename_to_uri(paths[i].c_str(), nullptr, nullptr);
    gtk_selection_data_set_uris(selection, uris.get());
}

void give(GtkClipboard* /*clipboard*/, GtkSelectionData* selection, guint group, gpointer data) {
    const Offer& offer = *static_cast<const Offer*>(data);
    switch (group) {
    case Text:
        gtk_selection_data_set_text(selection, offer.text.c_str(), static_cast<gint>(offer.text.size()));
        return;
    case Files:
        setFiles(selection, offer.paths);
        return;
    default:
        setBytes(selection, offer.bytes);
    }
}

gboolean inputIsReadable(gint /*descriptor*/, GIOCondition /*condition*/, gpointer loop) {
    if (discardInput())
        return G_SOURCE_CONTINUE;
    g_main_loop_quit(static_cast<GMainLoop*>(loop));
    return G_SOURCE_REMOVE;
}

class GtkPeer : public Peer {
public:
    GtkPeer() {
        setenv("NO_AT_BRIDGE", "1",
               1); // there may be no bus, and nobody needs this program's accessibility tree
        gdk_set_allowed_backends("x11");
        if (!gtk_init_check(nullptr, nullptr))
            throw std::runtime_error("Cannot open the display.");
        clipboard_ = gtk_clipboard_get(GDK_SELECTION_CLIPBOARD);
    }

    void copyText(const std::string& text) override {
        gtk_clipboard_set_text(clipboard_, text.c_str(), static_cast<gint>(text.size()));
        requireOwnership();
    }

    void copyHtml(const std::string& html, const std::string& text) override {
        offer_ = {text, html, {}};
        const TargetList targets(gtk_target_list_new(nullptr, 0));
        gtk_target_list_add(targets.get(), atom("text/html"), 0, Html);
        gtk_target_list_add_text_targets(targets.get(), Text);
        offer(targets);
    }

    void copyImage(const std::string& file) override {
        GError* error = nullptr;
        const Pixbuf picture(gdk_pixbuf_new_from_file(file.c_str(), &error));
        if (picture == nullptr)
            fail(file, error);
        gtk_clipboard_set_image(clipboard_, picture.get());
        requireOwnership();
    }

    void copyFiles(const std::vector<std::string>& paths) override {
        offer_ = {{}, {}, paths};
        const TargetList targets(gtk_target_list_new(nullptr, 0));
        gtk_target_list_add_uri_targets(targets.get(), Files);
        offer(targets);
    }

    void copyBytes(const std::string& type, const std::string& bytes) override {
        offer_ = {{}, bytes, {}};
        const TargetList targets(gtk_target_list_new(nullptr, 0));
        gtk_target_list_add(targets.get(), atom(type), 0, Raw);
        offer(targets);
    }

    void serve() override {
        GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
        g_unix_fd_add(STDIN_FILENO, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR | G_IO_NVAL),
                      inputIsReadable, loop);
        g_main_loop_run(loop);
        g_main_loop_unref(loop);
    }

    std::optional<std::string> pasteText() override {
        const String text(gtk_clipboard_wait_for_text(clipboard_));
        if (text == nullptr)
            return std::nullopt;
        return std::string(text.get());
    }

    std::optional<std::string> pasteHtml() override { return pasteBytes("text/html"); }

    bool pasteImage(const std::string& file) override {
        const Pixbuf picture(gtk_clipboard_wait_for_image(clipboard_));
        if (picture == nullptr)
            return false;
        GError* error = nullptr;
        if (!gdk_pixbuf_save(picture.get(), file.c_str(), "png", &error, nullptr))
            fail(file, error);
        return true;
    }

    std::vector<std::string> pasteFiles() override {
        const Strings uris(gtk_clipboard_wait_for_uris(clipboard_));
        std::vector<std::string> paths;
        for (char** uri = uris.get(); uri != nullptr && *uri != nullptr; ++uri) {
            const String path(g_filename_from_uri(*uri, nullptr, nullptr));
            paths.emplace_back(path != nullptr ? path.get() : *uri);
        }
        return paths;
    }

    std::optional<std::string> pasteBytes(const std::string& type) override {
        const SelectionData data(gtk_clipboard_wait_for_contents(clipboard_, atom(type)));
        if (data == nullptr || gtk_selection_data_get_length(data.get()) < 0)
            return std::nullopt;
        gint length = 0;
        const guchar* bytes = gtk_selection_data_get_data_with_length(data.get(), &length);
        return std::string(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(length));
    }

    std::vector<std::string> targets() override {
        GdkAtom* targets = nullptr;
        gint count = 0;
        std::vector<std::string> names;
        if (!gtk_clipboard_wait_for_targets(clipboard_, &targets, &count))
            return names;
        for (gint i = 0; i < count; ++i)
            names.emplace_back(String(gdk_atom_name(targets[i])).get());
        g_free(targets);
        return names;
    }

private:
    void offer(const TargetList& list) {
        gint count = 0;
        GtkTargetEntry* entries = gtk_target_table_new_from_list(list.get(), &count);
        const bool owns = gtk_clipboard_set_with_data(clipboard_, entries, static_cast<guint>(count), give,
                                                      nullptr, &offer_) == TRUE;
        gtk_target_table_free(entries, count);
        if (!owns)
            throw std::runtime_error("The clipboard cannot be owned.");
    }

    /// GTK's functions that set text and pictures report no failure, so this checks the owner.
    static void requireOwnership() {
        if (gdk_selection_owner_get(GDK_SELECTION_CLIPBOARD) == nullptr)
            throw std::runtime_error("The clipboard cannot be owned.");
    }

    GtkClipboard* clipboard_ = nullptr; // owned by GTK
    Offer offer_;                       // the clipboard's callback reads it
};

} // namespace

} // namespace tavel

int main(int argumentCount, char** arguments) {
    return tavel::runPeer(argumentCount, arguments, [] { return std::make_unique<tavel::GtkPeer>(); });
}
