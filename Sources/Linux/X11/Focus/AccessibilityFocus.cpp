#include "Linux/X11/Focus/AccessibilityFocus.h"

#include "Linux/X11/Focus/AccessibleRoles.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

/// A program that has lost the focus tells so just before another one tells that it has it.
constexpr std::chrono::milliseconds settling{100};

constexpr std::chrono::milliseconds farewellTimeOut{100};

/// Long enough for the bus to start first.
constexpr std::chrono::milliseconds addressTimeOut{600};

/// How often the focus may move while it is asked for.
constexpr int mostRounds = 3;

std::unique_ptr<BusConnection> openAccessibilityBus(BusConnection::Clock::time_point end) {
    const auto session = sessionBusAddress();
    if (!session)
        return nullptr;
    const auto sessionBus = BusConnection::open(*session, end);
    if (sessionBus == nullptr)
        return nullptr;
    const auto reply =
        sessionBus->call({"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus"}, "GetAddress", nullptr, "(s)",
                         std::min(end, BusConnection::Clock::now() + addressTimeOut));
    if (reply == nullptr)
        return nullptr;
    const char* address = nullptr;
    g_variant_get(reply.get(), "(&s)", &address);
    return BusConnection::open(address, end);
}

} // namespace

std::unique_ptr<AccessibilityFocus> AccessibilityFocus::open(std::function<void()> settled,
                                                             Clock::time_point end) {
    auto bus = openAccessibilityBus(end);
    if (bus == nullptr)
        return nullptr;
    std::unique_ptr<AccessibilityFocus> focus(new AccessibilityFocus(std::move(bus), std::move(settled)));
    if (!focus->listener_.begin(end))
        return nullptr;
    return focus;
}

AccessibilityFocus::AccessibilityFocus(std::unique_ptr<BusConnection> bus, std::function<void()> settled)
    : bus_(std::move(bus)), cache_(std::make_shared<FocusCache>()),
      reminder_(std::make_shared<MainLoopReminder>(settling, std::move(settled))),
      listener_(*bus_, cache_, [reminder = reminder_] { reminder->remind(); }), searcher_(*bus_, cache_) {}

AccessibilityFocus::~AccessibilityFocus() {
    reminder_->end();
    listener_.finish(Clock::now() + farewellTimeOut);
}

std::optional<std::uint32_t> AccessibilityFocus::focusedRole(std::int32_t process, Clock::time_point end,
                                                             Clock::duration callTimeOut) {
    const auto callEnd = [&] { return std::min(end, Clock::now() + callTimeOut); };
    for (int round = 0; round < mostRounds; ++round) {
        const auto element = cache_->current();
        if (!element || !belongsTo(*element, process, callEnd()))
            return std::nullopt;
        const auto role = roleOf(*element, callEnd());
        // What the program told before it answered is known by now.
        if (cache_->current() != element)
            continue;
        if (!role || !isItemRole(*role))
            return role;
        // A view marks an item as focused even while the user types what to look for.
        const auto previous = cache_->previous();
        if (!previous)
            return role;
        const auto previousEnd = callEnd();
        const auto previousRole = roleOf(*previous, previousEnd);
        if (previousRole)
            return isTextRole(*previousRole) ? previousRole : role;
        // One that is gone is answered with an error, and without delay.
        return Clock::now() < previousEnd ? role : std::nullopt;
    }
    return std::nullopt;
}

std::optional<std::uint32_t> AccessibilityFocus::roleOf(const AccessibleElement& element,
                                                        Clock::time_point end) const {
    const auto reply =
        bus_->call({element.program.c_str(), element.path.c_str(), "org.a11y.atspi.Accessible"}, "GetRole",
                   nullptr, "(u)", end);
    if (reply == nullptr)
        return std::nullopt;
    std::uint32_t role = 0;
    g_variant_get(reply.get(), "(u)", &role);
    return role;
}

bool AccessibilityFocus::belongsTo(const AccessibleElement& element, std::int32_t process,
                                   Clock::time_point end) {
    if (owner_.program != element.program) {
        const auto owner = bus_->processOf(element.program, end);
        if (!owner)
            return false;
        owner_ = {element.program, *owner};
    }
    return owner_.process == process;
}

} // namespace tavel
