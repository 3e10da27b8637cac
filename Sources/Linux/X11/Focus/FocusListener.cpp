#include "Linux/X11/Focus/FocusListener.h"

#include "Linux/X11/Focus/AccessibleMessages.h"
#include "Linux/X11/Focus/FilterHandover.h"

#include <algorithm>
#include <array>
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

/// False if no toolkit sends such an event.
bool takeFocusNews(GDBusMessage* message, FocusCache& cache) {
    auto news = focusNewsIn(message);
    if (!news)
        return false;
    if (news->hasFocus)
        cache.gained(std::move(news->element));
    else
        cache.lost(news->element);
    return true;
}

GDBusMessage* filter(GDBusConnection*, GDBusMessage* message, gboolean incoming, gpointer data) {
    if (incoming == FALSE || g_dbus_message_get_message_type(message) != G_DBUS_MESSAGE_TYPE_SIGNAL)
        return message;
    const FilterHandover::Scope scope(handover);
    const Recipient& recipient = *static_cast<const Recipient*>(data);
    if (tellsActivation(message) || takeFocusNews(message, *recipient.cache))
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
