#include "Doctor/Surroundings.h"

namespace tavel::surroundings {

std::string adviceOn(const PassedOverPlace&) {
    return {};
}

void examineHelpers(Report& report, Platform&) {
    report.section("Modules and programs");
    report.line("none", "macOS itself has what the agent needs");
}

void examineFilePrompt(Report& report, Platform& platform, bool isAccepted) {
    // The user gives these permissions to the application that starts a program, here to the terminal.
    const std::string advice =
        "Give the application that starts the agent this permission in System Settings, "
        "Privacy & Security, and start it again.";
    if (isAccepted || platform.keyboardTap().isPermitted())
        report.line("keyboard", "can be intercepted");
    else
        report.limitation("keyboard", "the system does not permit to intercept keys",
                          "Input Monitoring and Accessibility. " + advice);
    if (platform.focusProbe().isTrusted())
        report.line("accessibility", "permitted");
    else
        report.limitation("accessibility", "the system does not permit to ask programs for their focus",
                          "Accessibility. " + advice);
}

void examineOwner(Report& report, Platform&) {
    report.line("owner", "not told: macOS does not say which program copied");
}

bool isContentAtHand(Platform&) {
    return false; // the system may ask the user first
}

} // namespace tavel::surroundings
