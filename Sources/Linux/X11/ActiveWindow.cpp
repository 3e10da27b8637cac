#include "Linux/X11/ActiveWindow.h"

#include "Support/Text.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace tavel {

namespace {

/// The classes of file managers' windows, in all their versions. Programs with GTK 4, such as Nautilus, use
/// their application identifier.
constexpr std::array fileManagerClasses{
    std::string_view("thunar"),
    std::string_view("caja"),
    std::string_view("nemo"),
    std::string_view("nautilus"),
    std::string_view("pcmanfm"),
    std::string_view("pcmanfm-qt"),
    std::string_view("dolphin"),
    std::string_view("org.gnome.nautilus"),
    std::string_view("peony"),
    std::string_view("dde-file-manager"),
    std::string_view("spacefm"),
    std::string_view("io.elementary.files"),
    std::string_view("org.kde.dolphin"),
};

/// In units of four bytes, as GetProperty counts; longer than any class name.
constexpr std::uint32_t longestProperty = 256;

xcb_get_property_cookie_t ask(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                              xcb_atom_t type) {
    return xcb_get_property(connection, 0, window, property, type, 0, longestProperty);
}

X11Reply<xcb_get_property_reply_t> answer(const ReplyWaiter& wait, xcb_get_property_cookie_t cookie) {
    return awaitReply(wait, cookie, xcb_get_property_reply);
}

xcb_atom_t answer(const ReplyWaiter& wait, xcb_intern_atom_cookie_t cookie) {
    const auto reply = awaitReply(wait, cookie, xcb_intern_atom_reply);
    return reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::optional<std::uint32_t> number(const X11Reply<xcb_get_property_reply_t>& reply) {
    if (reply == nullptr || reply->format != 32 || reply->value_len < 1)
        return std::nullopt;
    std::uint32_t value = 0;
    std::memcpy(&value, xcb_get_property_value(reply.get()), sizeof(value));
    return value;
}

std::string classNameOf(const X11Reply<xcb_get_property_reply_t>& reply) {
    if (reply == nullptr || reply->format != 8)
        return {};
    // The name of the instance and the name of the class, each ended by a zero byte.
    std::string_view value(static_cast<const char*>(xcb_get_property_value(reply.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    const std::size_t instanceEnd = value.find('\0');
    if (instanceEnd == std::string_view::npos)
        return {};
    value.remove_prefix(instanceEnd + 1);
    return std::string(value.substr(0, value.find('\0')));
}

} // namespace

ActiveWindow::ActiveWindow(xcb_connection_t* connection, xcb_window_t root, ReplyWaiter wait)
    : connection_(connection), root_(root), wait_(std::move(wait)) {
    constexpr std::string_view activeName = "_NET_ACTIVE_WINDOW";
    constexpr std::string_view processName = "_NET_WM_PID";
    const auto active = xcb_intern_atom(connection_, 0, activeName.size(), activeName.data());
    const auto process = xcb_intern_atom(connection_, 0, processName.size(), processName.data());
    activeWindow_ = answer(wait_, active);
    processIdentifier_ = answer(wait_, process);
}

std::optional<ProgramWindow> ActiveWindow::read() const {
    const auto active = number(answer(wait_, ask(connection_, root_, activeWindow_, XCB_ATOM_WINDOW)));
    if (!active || *active == XCB_WINDOW_NONE)
        return std::nullopt;
    const auto process = ask(connection_, *active, processIdentifier_, XCB_ATOM_CARDINAL);
    const auto windowClass = ask(connection_, *active, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING);
    const auto processIdentifier = number(answer(wait_, process));
    std::string className = classNameOf(answer(wait_, windowClass));
    if (!processIdentifier || *processIdentifier == 0)
        return std::nullopt;
    return ProgramWindow{*active, static_cast<std::int32_t>(*processIdentifier), std::move(className)};
}

void ActiveWindow::activate(xcb_window_t window) const {
    constexpr std::uint32_t fromPager = 2; // window managers may refuse requests from applications
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = activeWindow_;
    message.data.data32[0] = fromPager;
    xcb_send_event(connection_, 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(connection_);
}

std::span<const std::string_view> fileManagerClassNames() {
    return fileManagerClasses;
}

bool isFileManagerClass(std::string_view className) {
    return std::ranges::any_of(fileManagerClasses, [className](std::string_view known) {
        return equalsIgnoringAsciiCase(className, known);
    });
}

} // namespace tavel
