#include "Linux/X11/Keyboard/Xwayland.h"

#include "Linux/X11/X11Reply.h"

#include <xcb/randr.h>

#include <algorithm>
#include <cstddef>
#include <span>
#include <string_view>

namespace tavel {

namespace {

constexpr std::string_view extensionName = "XWAYLAND";
constexpr std::string_view outputPrefix = "XWAYLAND"; // a number follows

bool hasExtension(xcb_connection_t* connection) {
    const X11Reply<xcb_query_extension_reply_t> reply(xcb_query_extension_reply(
        connection, xcb_query_extension(connection, extensionName.size(), extensionName.data()), nullptr));
    return reply != nullptr && reply->present != 0;
}

bool isOutputOfXwayland(xcb_connection_t* connection, xcb_randr_output_t output) {
    const X11Reply<xcb_randr_get_output_info_reply_t> reply(xcb_randr_get_output_info_reply(
        connection, xcb_randr_get_output_info(connection, output, XCB_CURRENT_TIME), nullptr));
    if (reply == nullptr)
        return false;
    const std::string_view name(reinterpret_cast<const char*>(xcb_randr_get_output_info_name(reply.get())),
                                static_cast<std::size_t>(xcb_randr_get_output_info_name_length(reply.get())));
    return name.starts_with(outputPrefix);
}

} // namespace

bool isXwayland(xcb_connection_t* connection, xcb_window_t root) {
    if (hasExtension(connection))
        return true;
    const xcb_query_extension_reply_t* const randr = xcb_get_extension_data(connection, &xcb_randr_id);
    if (randr == nullptr || randr->present == 0)
        return false;
    const X11Reply<xcb_randr_get_screen_resources_current_reply_t> resources(
        xcb_randr_get_screen_resources_current_reply(
            connection, xcb_randr_get_screen_resources_current(connection, root), nullptr));
    if (resources == nullptr)
        return false;
    const std::span<const xcb_randr_output_t> outputs(
        xcb_randr_get_screen_resources_current_outputs(resources.get()),
        static_cast<std::size_t>(xcb_randr_get_screen_resources_current_outputs_length(resources.get())));
    return std::ranges::any_of(
        outputs, [connection](xcb_randr_output_t output) { return isOutputOfXwayland(connection, output); });
}

} // namespace tavel
