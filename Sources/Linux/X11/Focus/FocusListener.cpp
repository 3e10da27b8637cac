#include "Linux/X11/Focus/FocusListener.h"

#include "Linux/X11/Focus/FilterHandover.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace tavel {

namespace {

/// The events to register. Toolkits report nothing without a registered listener.
constexpr std::array events{"object:state-changed:focused", "window:activate"};

constexpr std::array rules{
    "type='signal',interface='org.a11y.atspi.Event.Object',member='StateChanged',arg0='focused'",
    "type='signal',interface='org.a11y.atspi.Event.Window',member='Activate'",
    "type='signal',interface='org.a11y.atspi.Event.Window',member='activate'", // so GTK 4
};

FilterHandover handover;

struct Recipient {
    std::shared_ptr<FocusCache> cache;
    std::function<void()> noticed;
};

std::string_view text(const char* maybeNull) {
    return maybeNull == nullptr ? std::string_view() : maybeNull;
}

bool tellsActivation(GDBusMessage* message) {
    const std::string_view member = text(g_dbus_message_get_member(message));
    return text(g_dbus_message_get_interface(message)) == "org.a11y.atspi.Event.Window" &&
           (member == "Activate" || member == "activate");
}

bool tellsFocus(GDBusMessage* message) {
    return text(g_dbus_message_get_interface(message)) == "org.a11y.atspi.Event.Object" &&
           text(g_dbus_message_get_member(message)) == "StateChanged" &&
           text(g_dbus_message_get_arg0(message)) == "focused";
}

/// False if no toolkit sends such an event.
bool takeFocusNews(GDBusMessage* message, FocusCache& cache) {
    GVariant* const body = g_dbus_message_get_body(message);
    const char* const sender = g_dbus_message_get_sender(message);
    const char* const path = g_dbus_message_get_path(message);
    // The values behind the second number differ between toolkits.
    if (body == nullptr || sender == nullptr || path == nullptr ||
        !g_variant_is_of_type(body, G_VARIANT_TYPE("(siiv*)")))
        return false;
    std::int32_t hasFocus = 0;
    g_variant_get_child(body, 1, "i", &hasFocus);
    AccessibleElement element{sender, path};
    if (hasFocus != 0)
        cache.gained(std::move(element));
    else
        cache.lost(element);
    return true;
}

GDBusMessage* filter(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer data) {
    if (incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_SIGNAL)
        return message;
    const FilterHandover::Scope scope(handover);
    const Recipient& recipient = *static_cast<const Recipient*>(data);
    if (tellsActivation(message) || (tellsFocus(message) && takeFocusNews(message, *recipient.cache)))
        recipient.noticed();
    return message;
}

} // namespace

FocusListener::FocusListener(const BusConnection& bus, std::shared_ptr<FocusCache> cache,
                             std::function<void()> noticed)
    : bus_(bus) {
    const auto release = [](gpointer data) {
        handover.take();
        delete static_cast<Recipient*>(data);
    };
    auto* const recipient = new Recipient{std::move(cache), std::move(noticed)};
    handover.give();
    filter_ = g_dbus_connection_add_filter(bus_.get(), filter, recipient, release);
}

FocusListener::~FocusListener() {
    // The filter may be running at this moment. Its data is freed when it has ended.
    g_dbus_connection_remove_filter(bus_.get(), filter_);
}

bool FocusListener::begin(Clock::time_point end) {
    for (const char* const rule : rules)
        if (bus_.call({"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus"}, "AddMatch",
                      g_variant_new("(s)", rule), "()", end) == nullptr)
            return false;
    return registryAgrees("RegisterEvent", end);
}

void FocusListener::finish(Clock::time_point end) {
    registryAgrees("DeregisterEvent", end);
}

bool FocusListener::registryAgrees(const char* method, Clock::time_point end) const {
    return std::ranges::all_of(events, [&](const char* event) {
        return bus_.call({"org.a11y.atspi.Registry", "/org/a11y/atspi/registry", "org.a11y.atspi.Registry"},
                         method, g_variant_new("(s)", event), "()", end) != nullptr;
    });
}

} // namespace tavel
