#include "Linux/X11/Focus/AccessibleMessages.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

namespace tavel {

namespace {

std::string_view text(const char* maybeNull) {
    return maybeNull == nullptr ? std::string_view() : maybeNull;
}

std::optional<AccessibleElement> elementAt(const char* program, const char* path) {
    if (std::string_view(path).size() > longestElementPath)
        return std::nullopt;
    return AccessibleElement{program, path};
}

} // namespace

std::vector<AccessibleElement> elementsIn(GVariant* reply) {
    std::vector<AccessibleElement> elements;
    if (reply == nullptr)
        return elements;
    const GioPointer<GVariant> list(g_variant_get_child_value(reply, 0));
    const std::size_t count = std::min<std::size_t>(g_variant_n_children(list.get()), mostElements);
    for (std::size_t index = 0; index < count; ++index) {
        const char* program = nullptr;
        const char* path = nullptr;
        g_variant_get_child(list.get(), index, "(&s&o)", &program, &path);
        if (auto element = elementAt(program, path))
            elements.push_back(std::move(*element));
    }
    return elements;
}

bool endsWithState(GVariant* tuple, unsigned int state) {
    // 64 bits, the lower half first.
    const GioPointer<GVariant> halves(g_variant_get_child_value(tuple, g_variant_n_children(tuple) - 1));
    if (g_variant_n_children(halves.get()) == 0)
        return false;
    std::uint32_t lower = 0;
    g_variant_get_child(halves.get(), 0, "u", &lower);
    return (lower >> state & 1U) != 0;
}

std::optional<AccessibleElement> onlyFocusedOf(GVariant* cachedItems, const std::function<bool()>& isOver) {
    const GioPointer<GVariant> items(g_variant_get_child_value(cachedItems, 0));
    std::optional<AccessibleElement> focused;
    for (std::size_t index = 0; index < g_variant_n_children(items.get()); ++index) {
        if (isOver()) // a program may list any number
            return std::nullopt;
        const GioPointer<GVariant> item(g_variant_get_child_value(items.get(), index));
        if (!endsWithState(item.get(), focusedState))
            continue;
        if (focused)
            return std::nullopt;
        const char* program = nullptr;
        const char* path = nullptr;
        g_variant_get_child(item.get(), 0, "(&s&o)", &program, &path);
        focused = elementAt(program, path);
        if (!focused)
            return std::nullopt;
    }
    return focused;
}

std::optional<FocusNews> focusNewsIn(GDBusMessage* message) {
    if (text(g_dbus_message_get_interface(message)) != "org.a11y.atspi.Event.Object" ||
        text(g_dbus_message_get_member(message)) != "StateChanged" ||
        text(g_dbus_message_get_arg0(message)) != "focused")
        return std::nullopt;
    GVariant* const body = g_dbus_message_get_body(message);
    const char* const sender = g_dbus_message_get_sender(message);
    const char* const path = g_dbus_message_get_path(message);
    // The values behind the second number differ between toolkits.
    if (body == nullptr || sender == nullptr || path == nullptr ||
        !g_variant_is_of_type(body, G_VARIANT_TYPE("(siiv*)")))
        return std::nullopt;
    auto element = elementAt(sender, path);
    if (!element)
        return std::nullopt;
    std::int32_t hasFocus = 0;
    g_variant_get_child(body, 1, "i", &hasFocus);
    return FocusNews{std::move(*element), hasFocus != 0};
}

bool tellsActivation(GDBusMessage* message) {
    const std::string_view member = text(g_dbus_message_get_member(message));
    return text(g_dbus_message_get_interface(message)) == "org.a11y.atspi.Event.Window" &&
           (member == "Activate" || member == "activate");
}

} // namespace tavel
