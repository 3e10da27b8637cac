#include "Linux/Panel/Program/PanelSession.h"

#include <fcntl.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace tavel {
namespace {

/// Nothing but reports may reach the descriptor for reports, and no program that a library starts may keep
/// one of the two open.
int takeDescriptor(int number, int replacement) {
    const int taken = fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    if (taken < 0 || replacement < 0 || dup2(replacement, number) < 0) {
        std::perror("The standard descriptors cannot be used");
        std::exit(1);
    }
    return taken;
}

} // namespace
} // namespace tavel

/// A naming panel for another program, which sends a PanelRequest per line to the standard input and gets
/// a PanelReport per line from the standard output. The process ends with its standard input, and with the X
/// server.
int main() {
    const int requests = tavel::takeDescriptor(STDIN_FILENO, open("/dev/null", O_RDONLY | O_CLOEXEC));
    const int reports = tavel::takeDescriptor(STDOUT_FILENO, STDERR_FILENO);

    // A Wayland compositor lets no program say where its window is to stand.
    gdk_set_allowed_backends("x11");
    g_set_prgname("tavel-panel");
    if (gtk_init_check(nullptr, nullptr) == FALSE) {
        std::fputs("No X server can be reached.\n", stderr);
        std::_Exit(1);
    }
    gdk_set_program_class("tavel-panel"); // GTK has begun it with a capital letter
    const tavel::PanelSession session(requests, reports);
    gtk_main();
    return 0;
}
