#include "Tests/X11/Focus/FocusDesktop.h"

#include "Linux/X11/X11Reply.h"

#include <cstdlib>
#include <stdexcept>

namespace tavel {

FocusDesktop::FocusDesktop()
    : windowManager_(X11Connection::open(server_.display().c_str())),
      connection_(X11Connection::open(server_.display().c_str())) {
    if (windowManager_ == nullptr || connection_ == nullptr)
        throw std::runtime_error("The server takes no connections.");
    const auto setup = xcb_setup_roots_iterator(xcb_get_setup(windowManager_->get()));
    root_ = setup.data->root;
    setenv("XDG_RUNTIME_DIR", directory_.runtimeDirectory().c_str(), 1);
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    probe_ = std::make_unique<X11FocusProbe>(*connection_, connection_->replyWaiter(), deadline_);
}

TestAccessibilityBus& FocusDesktop::startBuses() {
    buses_ = std::make_unique<TestAccessibilityBus>(directory_.runtimeDirectory(), server_.display());
    setenv("DBUS_SESSION_BUS_ADDRESS", buses_->sessionAddress().c_str(), 1);
    return *buses_;
}

xcb_window_t FocusDesktop::createWindow(std::optional<std::uint32_t> process, const std::string& className) {
    xcb_connection_t* const connection = windowManager_->get();
    const xcb_window_t window = xcb_generate_id(connection);
    xcb_create_window(connection, XCB_COPY_FROM_PARENT, window, root_, 0, 0, 10, 10, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    if (process)
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, windowManager_->atom("_NET_WM_PID"),
                            XCB_ATOM_CARDINAL, 32, 1, &*process);
    if (!className.empty()) {
        const std::string both = "instance" + std::string(1, '\0') + className + std::string(1, '\0');
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, 8,
                            static_cast<std::uint32_t>(both.size()), both.data());
    }
    windowManager_->synchronize();
    return window;
}

void FocusDesktop::destroyWindow(xcb_window_t window) {
    xcb_destroy_window(windowManager_->get(), window);
    windowManager_->synchronize();
}

void FocusDesktop::setActiveWindow(xcb_window_t window) {
    xcb_change_property(windowManager_->get(), XCB_PROP_MODE_REPLACE, root_,
                        windowManager_->atom("_NET_ACTIVE_WINDOW"), XCB_ATOM_WINDOW, 32, 1, &window);
    windowManager_->synchronize();
}

void FocusDesktop::awaitRole(std::int32_t process, const std::optional<std::string>& role) {
    runUntil([&] { return probe_->focusedRole(process) == role; });
}

} // namespace tavel
