#include "Linux/Base/DescriptorWatch.h"
#include "Linux/Panel/PanelMessages.h"
#include "Linux/Panel/Program/NamePanelWindow.h"
#include "Linux/Panel/ReceivedLines.h"
#include "Support/Files.h"

#include <fcntl.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <variant>

namespace tavel {
namespace {

/// No clean-up is needed: the X server removes the window with the process.
[[noreturn]] void endProcess(const char* reason) {
    if (reason != nullptr)
        std::fprintf(stderr, "%s\n", reason);
    std::_Exit(reason == nullptr ? 0 : 1);
}

/// Follows the requests and writes the reports while GTK's main loop runs. Ends the process at the end of the
/// requests, and with an error at a malformed request.
class PanelSession {
public:
    /// The descriptors remain the caller's.
    PanelSession(int requests, int reports)
        : requests_(requests), reports_(reports), watch_(requests, [this] { receive(); }) {}

private:
    void receive() {
        const bool isOpen = lines_.receive(requests_);
        while (const auto line = lines_.next()) {
            const auto request = panelRequestFrom(*line);
            // The first request, and no other, makes the window.
            if (!request || std::holds_alternative<PanelStart>(*request) == window_.has_value())
                endProcess("A request cannot be understood.");
            std::visit([this](const auto& one) { follow(one); }, *request);
        }
        if (!isOpen)
            endProcess(nullptr);
    }

    void follow(const PanelStart& start) {
        window_.emplace(start, [this](const PanelReport& one) { report(one); });
        report(PanelReady{window_->surroundings()});
    }
    void follow(ScreenPoint origin) const { window_->setOrigin(origin); }
    void follow(const PanelShow&) const { window_->show(); }
    void follow(const PanelHint& hint) const { window_->showHint(hint.text); }

    void report(const PanelReport& report) const {
        if (!writeAll(reports_, lineOf(report)))
            endProcess("A report cannot be written.");
    }

    int requests_;
    int reports_;
    ReceivedLines lines_;
    std::optional<NamePanelWindow> window_;
    DescriptorWatch watch_;
};

/// Moves a standard descriptor to another number and puts the null device in its place. So output of
/// libraries cannot mix with the reports, and programs that a library starts do not inherit the descriptor.
int takeDescriptor(int number) {
    const int taken = fcntl(number, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
    const int replacement = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (taken < 0 || replacement < 0 || dup2(replacement, number) < 0) {
        std::perror("The standard descriptors cannot be used");
        std::exit(1);
    }
    return taken;
}

} // namespace
} // namespace tavel

/// Shows a naming panel for the agent. It reads one PanelRequest per line from standard input and writes one
/// PanelReport per line to standard output. The process ends when its standard input or the X server ends.
int main() {
    const int requests = tavel::takeDescriptor(STDIN_FILENO);
    const int reports = tavel::takeDescriptor(STDOUT_FILENO);

    // Under Wayland, a program cannot choose the position of its window.
    gdk_set_allowed_backends("x11");
    g_set_prgname("tavel-panel");
    if (gtk_init_check(nullptr, nullptr) == FALSE) {
        std::fputs("No X server can be reached.\n", stderr);
        std::_Exit(1);
    }
    gdk_set_program_class("tavel-panel"); // GTK's default begins with a capital letter
    const tavel::PanelSession session(requests, reports);
    gtk_main();
    return 0;
}
