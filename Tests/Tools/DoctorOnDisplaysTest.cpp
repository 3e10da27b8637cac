#include "Linux/X11/X11Reply.h"
#include "Tests/Support/XServer.h"
#include "Tests/Tools/DoctorTest.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/CompositorOwner.h"

#include <xcb/xcb.h>

#include <string>

namespace tavel {

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

class DoctorOnX11 : public DoctorTest {
protected:
    DoctorOnX11() { world_.setVariable("DISPLAY", server_.display()); }

    XServer server_;
};

TEST_F(DoctorOnX11, TellsOfTheServerAndTheFilePrompt) {
    const std::string said = report(1);
    EXPECT_THAT(said, HasSubstr("  stands on        the selection CLIPBOARD of the X server " +
                                server_.display() + "\n  not on Wayland   WAYLAND_DISPLAY is not set\n"));
    EXPECT_THAT(said, Not(HasSubstr("not on X11")));
    EXPECT_THAT(said, HasSubstr("  write and read   works; tried on the selection tavel-console-doctor of "));
    EXPECT_THAT(said, HasSubstr("  agent            can switch it on\n"
                                "  keyboard         Ctrl+V can be intercepted\n"
                                "  panel            can be shown\n"
                                "  accessibility    the accessibility bus cannot be reached, "));
    EXPECT_THAT(said, HasSubstr("  window manager   none reports the active window, "));
    EXPECT_THAT(said, HasSubstr("  owner            nobody: the clipboard is empty\n"
                                "  offers           nothing\n"));
}

TEST_F(DoctorOnX11, NamesTheOwnersProcessAndShowsNoContent) {
    const std::string file = world_.write("file", "my secret");
    RunningTool xclip(world_, {"/usr/bin/xclip", "-selection", "clipboard", "-verbose", "-quiet", file},
                      RunningTool::Place::terminal);
    xclip.waitForOutput("Waiting for selection requests");
    const std::string said = report(1);
    EXPECT_THAT(said, ContainsRegex("owner +xclip, process " + std::to_string(xclip.processIdentifier()) +
                                    ", window 0x[0-9a-f]+\n  offers +public.utf8-plain-text\n"));
    EXPECT_THAT(said, Not(HasSubstr("secret")));
}

TEST_F(DoctorOnX11, SaysThatAnotherProgramHasTheShortcut) {
    constexpr xcb_keycode_t keyOfV = 55; // on Xvfb's keyboard
    xcb_connection_t* const other = xcb_connect(server_.display().c_str(), nullptr);
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(other)).data->root;
    const X11Reply<xcb_generic_error_t> error(
        xcb_request_check(other, xcb_grab_key_checked(other, 0, root, XCB_MOD_MASK_CONTROL, keyOfV,
                                                      XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC)));
    EXPECT_EQ(error, nullptr);
    const std::string said = report(1);
    EXPECT_THAT(said, HasSubstr("  agent            refuses it: \"Renommage : autorise "));
    EXPECT_THAT(said,
                HasSubstr("  keyboard         another program has grabbed Ctrl+V for the whole screen\n"));
    xcb_disconnect(other);
}

class DoctorOnWayland : public DoctorTest {
protected:
    std::string reportOn(const Compositor& compositor) {
        world_.setVariable("WAYLAND_DISPLAY", compositor.display());
        return report(1);
    }
};

TEST_F(DoctorOnWayland, TellsOfTheCompositorAndShowsNoContent) {
    Compositor compositor;
    CompositorOwner owner(compositor);
    owner.offerValue("text/plain;charset=utf-8", "my secret");
    owner.take();
    const std::string said = reportOn(compositor);
    EXPECT_THAT(said, HasSubstr("  stands on        the clipboard of the Wayland compositor " +
                                compositor.display() + " (ext_data_control_manager_v1)\n"));
    EXPECT_THAT(said, HasSubstr("  keyboard         Wayland has no portable way to intercept a key"));
    EXPECT_THAT(said,
                HasSubstr("  owner            not told: a Wayland compositor does not say which program "
                          "copied\n  offers           public.utf8-plain-text\n"));
    EXPECT_THAT(said, Not(HasSubstr("secret")));
}

TEST_F(DoctorOnWayland, SaysThatTheCompositorHasNoDataControl) {
    const XServer server;
    world_.setVariable("DISPLAY", server.display());
    const std::string said = reportOn(Compositor({.offersExt = false, .offersWlr = false}));
    EXPECT_THAT(said, ContainsRegex("  stands on +the selection CLIPBOARD of the X server .*\n"
                                    "  not on Wayland +the compositor at .* offers no data control "));
    EXPECT_THAT(said, HasSubstr("\n  1. Clipboard, not on Wayland: the compositor at "));
}

} // namespace

} // namespace tavel
