#include "Linux/X11/X11Reply.h"
#include "Tests/Support/XServer.h"
#include "Tests/Tools/DoctorTest.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/X11/Focus/AccessibilityBus.h"

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tavel {

namespace {

using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// What a window manager and a file manager say of themselves on the root window and on a window of its own.
class StagedDesktop {
public:
    explicit StagedDesktop(const std::string& display) : connection_(xcb_connect(display.c_str(), nullptr)) {
        const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
        const xcb_window_t window = xcb_generate_id(connection_);
        xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, screen.root, 0, 0, 1, 1, 0,
                          XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, 0, nullptr);
        constexpr std::array names = std::to_array("thunar\0Thunar"); // with the zero byte at its end
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            names.size(), names.data());
        const xcb_atom_t active = atom("_NET_ACTIVE_WINDOW");
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen.root, atom("_NET_SUPPORTED"),
                            XCB_ATOM_ATOM, 32, 1, &active);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, screen.root, atom("_NET_CLIENT_LIST"),
                            XCB_ATOM_WINDOW, 32, 1, &window);
        static_cast<void>(atom("carried out by now"));
    }
    ~StagedDesktop() { xcb_disconnect(connection_); }
    StagedDesktop(const StagedDesktop&) = delete;
    StagedDesktop& operator=(const StagedDesktop&) = delete;

private:
    xcb_atom_t atom(std::string_view name) {
        const auto cookie =
            xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data());
        return awaitReply(connection_, cookie, xcb_intern_atom_reply)->atom;
    }

    xcb_connection_t* connection_;
};

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

TEST_F(DoctorOnX11, FindsNothingWrongOnADesktop) {
    const std::filesystem::path runtime = world_.directory() / "bus";
    std::filesystem::create_directory(runtime);
    const TestAccessibilityBus bus(runtime, server_.display());
    const StagedDesktop desktop(server_.display());
    world_.setVariable("DBUS_SESSION_BUS_ADDRESS", bus.sessionAddress());
    world_.setVariable("PATH", world_.directory().string());
    world_.writeScript("caja", "");
    const std::string said = report(0);
    EXPECT_THAT(said, HasSubstr("  accessibility    the bus answers\n"
                                "  window manager   is there\n"
                                "  file managers    running: Thunar; installed: caja\n"));
    EXPECT_THAT(said, EndsWith("\nAll is well.\n"));
}

TEST_F(DoctorOnX11, SaysThatThereIsNoFileManager) {
    world_.setVariable("PATH", "/nowhere");
    EXPECT_THAT(report(1), HasSubstr("  3. File prompt, file managers: running: none; installed: none.\n"));
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
