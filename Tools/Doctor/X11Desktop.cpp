#include "Doctor/X11Desktop.h"

#include "Linux/X11/ActiveWindow.h"
#include "Linux/X11/Selections/SelectionName.h"

#include <xcb/res.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <fstream>
#include <span>
#include <string_view>
#include <utility>

namespace tavel {

namespace {

/// In units of four bytes, as GetProperty counts: more windows than any desktop lists.
constexpr std::uint32_t longestProperty = 4096;

std::string hexadecimal(xcb_window_t window) {
    std::array<char, 16> text{};
    const int length = std::snprintf(text.data(), text.size(), "0x%x", window);
    return {text.data(), static_cast<std::size_t>(length)};
}

/// The name of the process on this machine; empty if there is none of that number.
std::string nameOfProcess(std::uint32_t process) {
    std::ifstream file("/proc/" + std::to_string(process) + "/comm");
    std::string name;
    std::getline(file, name);
    return name;
}

} // namespace

std::unique_ptr<X11Desktop> X11Desktop::open() {
    auto connection = X11Connection::open(nullptr);
    return connection == nullptr ? nullptr
                                 : std::unique_ptr<X11Desktop>(new X11Desktop(std::move(connection)));
}

X11Reply<xcb_get_property_reply_t> X11Desktop::property(xcb_window_t window, const char* name,
                                                        xcb_atom_t type) {
    const auto cookie =
        xcb_get_property(connection_->get(), 0, window, connection_->atom(name), type, 0, longestProperty);
    return connection_->await(cookie, xcb_get_property_reply);
}

xcb_window_t X11Desktop::root() {
    const auto reply = connection_->await(xcb_get_geometry(connection_->get(), connection_->window()),
                                          xcb_get_geometry_reply);
    return reply == nullptr ? xcb_window_t{XCB_WINDOW_NONE} : reply->root;
}

bool X11Desktop::hasWindowManager() {
    const auto reply = property(root(), "_NET_SUPPORTED", XCB_ATOM_ATOM);
    if (reply == nullptr || reply->format != 32)
        return false;
    const std::span<const xcb_atom_t> supported(
        static_cast<const xcb_atom_t*>(xcb_get_property_value(reply.get())), reply->value_len);
    return std::ranges::find(supported, connection_->atom("_NET_ACTIVE_WINDOW")) != supported.end();
}

std::vector<std::string> X11Desktop::runningFileManagers() {
    std::vector<std::string> found;
    const auto reply = property(root(), "_NET_CLIENT_LIST", XCB_ATOM_WINDOW);
    if (reply == nullptr || reply->format != 32)
        return found;
    const std::span<const xcb_window_t> windows(
        static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get())), reply->value_len);
    for (const xcb_window_t window : windows) {
        std::string name = classOf(window);
        if (isFileManagerClass(name) && std::ranges::find(found, name) == found.end())
            found.push_back(std::move(name));
    }
    return found;
}

std::string X11Desktop::describeClipboardOwner() {
    const xcb_atom_t selection = connection_->atom(selectionNameOf(std::nullopt));
    const auto reply = connection_->await(xcb_get_selection_owner(connection_->get(), selection),
                                          xcb_get_selection_owner_reply);
    if (reply == nullptr || reply->owner == XCB_WINDOW_NONE)
        return "nobody: the clipboard is empty";
    std::string owner = "window " + hexadecimal(reply->owner);
    if (const std::string name = classOf(reply->owner); !name.empty())
        owner += " of the class " + name;
    const auto process = processOf(reply->owner);
    if (!process)
        return owner + ", process unknown";
    const std::string name = nameOfProcess(*process);
    const std::string number = "process " + std::to_string(*process);
    // xclip, for instance, connects, and leaves the connection to a child that stays in the background.
    return (name.empty() ? number + ", which has left this to a child" : name + ", " + number) + ", " + owner;
}

std::string X11Desktop::classOf(xcb_window_t window) {
    const auto reply = property(window, "WM_CLASS", XCB_ATOM_STRING);
    if (reply == nullptr || reply->format != 8)
        return {};
    // The name of the instance and the name of the class, each ended by a zero byte.
    std::string_view value(static_cast<const char*>(xcb_get_property_value(reply.get())),
                           static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
    value.remove_prefix(std::min(value.find('\0'), value.size() - (value.empty() ? 0 : 1)));
    if (!value.empty())
        value.remove_prefix(1);
    return std::string(value.substr(0, value.find('\0')));
}

/// Asks the server (X-Resource 1.2), as most owners' windows name no process.
std::optional<std::uint32_t> X11Desktop::processOf(xcb_window_t window) {
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(connection_->get(), &xcb_res_id);
    if (extension == nullptr || extension->present == 0)
        return std::nullopt;
    const auto version =
        connection_->await(xcb_res_query_version(connection_->get(), 1, 2), xcb_res_query_version_reply);
    if (version == nullptr || (version->server_major == 1 && version->server_minor < 2))
        return std::nullopt;
    const xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto reply = connection_->await(xcb_res_query_client_ids(connection_->get(), 1, &wanted),
                                          xcb_res_query_client_ids_reply);
    if (reply == nullptr)
        return std::nullopt;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        if (xcb_res_client_id_value_value_length(ids.data) > 0)
            return *xcb_res_client_id_value_value(ids.data);
    }
    return std::nullopt;
}

} // namespace tavel
