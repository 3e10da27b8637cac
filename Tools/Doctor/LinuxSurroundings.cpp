#include "Doctor/Surroundings.h"
#include "Doctor/X11Desktop.h"
#include "Linux/HeadlessPlatform.h"
#include "Linux/WaylandPlatform.h"
#include "Linux/X11Platform.h"

#include <glib.h>

#include <memory>
#include <vector>

namespace tavel::surroundings {

namespace {

std::string joined(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names)
        list += (list.empty() ? "" : ", ") + name;
    return list.empty() ? "none" : list;
}

std::vector<std::string> installedFileManagers() {
    std::vector<std::string> found;
    for (const std::string_view name : fileManagerClassNames()) {
        const std::unique_ptr<gchar, decltype(&g_free)> path(
            g_find_program_in_path(std::string(name).c_str()), g_free);
        if (path != nullptr)
            found.emplace_back(name);
    }
    return found;
}

void examineKeyboard(Report& report, Platform& platform, bool isAccepted, bool hasX11) {
    if (isAccepted) {
        report.line("keyboard", "Ctrl+V can be intercepted");
        return;
    }
    KeyboardTap& tap = platform.keyboardTap();
    const bool isCreated = tap.create([](const KeyEvent&) { return KeyVerdict::pass; });
    tap.remove();
    if (isCreated)
        report.line("keyboard", "Ctrl+V can be intercepted from here");
    else
        report.limitation("keyboard", tap.refusal(),
                          hasX11
                              ? "The file prompt needs an X server that is not Xwayland, with XTEST, XKB and "
                                "XInput 2.1, and Ctrl+V must not be a shortcut of the whole desktop."
                              : "The file prompt needs a desktop on X11. All else works without it.");
}

void examineFocus(Report& report, Platform& platform) {
    FocusProbe& probe = platform.focusProbe();
    probe.follow(true);
    const bool isTrusted = probe.isTrusted();
    probe.follow(false);
    if (isTrusted)
        report.line("accessibility", "the bus answers");
    else
        report.limitation("accessibility",
                          "the accessibility bus cannot be reached, so Ctrl+V is never taken",
                          "Install at-spi2-core, and start the desktop with a D-Bus session bus "
                          "(DBUS_SESSION_BUS_ADDRESS).");
}

void examineDesktop(Report& report, X11Desktop& desktop) {
    if (desktop.hasWindowManager())
        report.line("window manager", "is there");
    else
        report.limitation("window manager", "none reports the active window, so Ctrl+V is never taken",
                          "Start a window manager that follows EWMH.");
    const std::vector<std::string> running = desktop.runningFileManagers();
    const std::vector<std::string> installed = installedFileManagers();
    const std::string found = "running: " + joined(running) + "; installed: " + joined(installed);
    if (running.empty() && installed.empty())
        report.limitation("file managers", found,
                          "Install one that the agent knows, such as Thunar, Nemo, Caja or Nautilus.");
    else
        report.line("file managers", found);
}

} // namespace

std::string adviceOn(const PassedOverPlace& place) {
    if (place.name == "Wayland")
        return "The agent uses the next place instead, and misses copies that do not reach it.";
    return "Start that X server, correct DISPLAY, or let this user in (XAUTHORITY).";
}

void examineFilePrompt(Report& report, Platform& platform, bool isAccepted) {
    const bool hasX11 = dynamic_cast<X11Platform*>(&platform) != nullptr;
    examineKeyboard(report, platform, isAccepted, hasX11);
    if (!hasX11)
        return;
    if (platform.canShowNamePanel())
        report.line("panel", "can be shown");
    else
        report.limitation("panel", "its program is missing", "Install tavel-panel; see above where.");
    examineFocus(report, platform);
    if (const auto desktop = X11Desktop::open())
        examineDesktop(report, *desktop);
}

void examineOwner(Report& report, Platform& platform) {
    if (dynamic_cast<X11Platform*>(&platform) != nullptr) {
        const auto desktop = X11Desktop::open();
        report.line("owner", desktop != nullptr ? desktop->describeClipboardOwner() : "the X server is gone");
    } else if (dynamic_cast<WaylandPlatform*>(&platform) != nullptr) {
        report.line("owner", "not told: a Wayland compositor does not say which program copied");
    } else {
        report.line("owner", "not known: the store keeps the content, but not who wrote it");
    }
}

bool isContentAtHand(Platform& platform) {
    return dynamic_cast<HeadlessPlatform*>(&platform) != nullptr;
}

} // namespace tavel::surroundings
