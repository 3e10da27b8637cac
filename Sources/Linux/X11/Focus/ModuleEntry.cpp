#include "Linux/X11/Focus/FocusModule.h"
#include "Linux/X11/Focus/X11FocusProbe.h"

namespace tavel {
namespace {

constexpr FocusModule focusModule{
    .make = [](X11Connection& connection, const ReplyWaiter& wait,
               DecisionDeadline& deadline) { return new X11FocusProbe(connection, wait, deadline); },
    .destroy = [](X11FocusProbe* probe) { delete probe; },
    .follow = [](X11FocusProbe& probe, bool on) { probe.follow(on); },
    .frontmostApplication = [](X11FocusProbe& probe) { return probe.frontmostApplication(); },
    .isTrusted = [](X11FocusProbe& probe) { return probe.isTrusted(); },
    .focusedRole = [](X11FocusProbe& probe, std::int32_t process) { return probe.focusedRole(process); },
    .activate = [](X11FocusProbe& probe, std::int32_t process) { probe.activate(process); },
};

} // namespace
} // namespace tavel

extern "C" __attribute__((visibility("default"))) const tavel::FocusModule* tavelFocusModule() {
    return &tavel::focusModule;
}
