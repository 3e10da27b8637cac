#include "Linux/X11/Focus/FocusSearch.h"

#include "Linux/X11/Focus/AccessibleMessages.h"
#include "Linux/X11/Focus/AccessibleRoles.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

namespace tavel {

namespace {

using Clock = BusConnection::Clock;
using Elements = std::vector<AccessibleElement>;

/// Limits each call of a walk. A program that does not answer at once is too busy for a walk over its
/// elements.
constexpr std::chrono::milliseconds callTimeOut{100};

class Search {
public:
    Search(const BusConnection& bus, Clock::time_point end, const std::stop_token& stop)
        : bus_(bus), end_(end), stop_(stop) {}

    std::optional<AccessibleElement> run(std::int32_t process) const;

private:
    bool isOver() const { return stop_.stop_requested() || Clock::now() >= end_; }
    Clock::time_point walkCallEnd() const { return std::min(end_, Clock::now() + callTimeOut); }

    GioPointer<GVariant> ask(const AccessibleElement& element, const char* interface, const char* method,
                             GVariant* arguments, const char* replyType, Clock::time_point end) const;
    Elements children(const AccessibleElement& element, Clock::time_point end) const;
    bool isInState(const AccessibleElement& element, unsigned int state, Clock::time_point end) const;
    bool isItem(const AccessibleElement& element) const;

    std::optional<AccessibleElement> program(std::int32_t process) const;
    std::optional<AccessibleElement> onlyClaimantInCache(const AccessibleElement& root) const;
    std::optional<Elements> claimants(const AccessibleElement& window) const;
    std::optional<AccessibleElement> walk(Elements windows) const;

    const BusConnection& bus_;
    const Clock::time_point end_;
    const std::stop_token& stop_;
};

GioPointer<GVariant> Search::ask(const AccessibleElement& element, const char* interface, const char* method,
                                 GVariant* arguments, const char* replyType, Clock::time_point end) const {
    return bus_.call({element.program.c_str(), element.path.c_str(), interface}, method, arguments, replyType,
                     end, stop_);
}

Elements Search::children(const AccessibleElement& element, Clock::time_point end) const {
    return elementsIn(
        ask(element, "org.a11y.atspi.Accessible", "GetChildren", nullptr, "(a(so))", end).get());
}

bool Search::isInState(const AccessibleElement& element, unsigned int state, Clock::time_point end) const {
    const auto reply = ask(element, "org.a11y.atspi.Accessible", "GetState", nullptr, "(au)", end);
    return reply != nullptr && endsWithState(reply.get(), state);
}

bool Search::isItem(const AccessibleElement& element) const {
    const auto reply = ask(element, "org.a11y.atspi.Accessible", "GetRole", nullptr, "(u)", end_);
    std::uint32_t role = 0;
    if (reply != nullptr)
        g_variant_get(reply.get(), "(u)", &role);
    return isItemRole(role);
}

std::optional<AccessibleElement> Search::program(std::int32_t process) const {
    const AccessibleElement desktop{"org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root"};
    for (const AccessibleElement& candidate : children(desktop, end_)) {
        if (isOver())
            break;
        if (bus_.processOf(candidate.program, walkCallEnd()) == process)
            return candidate;
    }
    return std::nullopt;
}

/// Of the elements that the program lists for others to cache, the one that is focused; nothing if that is
/// not exactly one. GTK 4 has this list and no Collection. It is one question instead of two for each
/// element, which matters while a program is busy and answers few.
std::optional<AccessibleElement> Search::onlyClaimantInCache(const AccessibleElement& root) const {
    const AccessibleElement cache{root.program, "/org/a11y/atspi/cache"};
    const auto reply = ask(cache, "org.a11y.atspi.Cache", "GetItems", nullptr, cachedItemsType, end_);
    if (reply == nullptr)
        return std::nullopt;
    return onlyFocusedOf(reply.get(), [this] { return isOver(); });
}

/// What the toolkit itself lists as focused; nothing if it cannot.
std::optional<Elements> Search::claimants(const AccessibleElement& window) const {
    constexpr std::int32_t all = 1;
    constexpr std::uint32_t canonicalOrder = 1;
    GVariantBuilder states;
    g_variant_builder_init(&states, G_VARIANT_TYPE("ai"));
    g_variant_builder_add(&states, "i", std::int32_t{1} << focusedState);
    g_variant_builder_add(&states, "i", 0);
    // Any attributes, roles and interfaces; as many as there are, of the whole window.
    GVariant* const rule =
        g_variant_new("(aiia{ss}iaiiasib)", &states, all, nullptr, all, nullptr, all, nullptr, all, FALSE);
    const auto reply =
        ask(window, "org.a11y.atspi.Collection", "GetMatches",
            g_variant_new("(@(aiia{ss}iaiiasib)uib)", rule, canonicalOrder, 0, TRUE), "(a(so))", end_);
    if (reply == nullptr)
        return std::nullopt;
    return elementsIn(reply.get());
}

/// In depth, from the last to the first.
std::optional<AccessibleElement> Search::walk(Elements windows) const {
    Elements ahead = std::move(windows); // never more than are looked at in all
    for (std::size_t seen = 0; !ahead.empty() && seen < mostElements && !isOver(); ++seen) {
        const AccessibleElement element = std::move(ahead.back());
        ahead.pop_back();
        if (isInState(element, focusedState, walkCallEnd()))
            return element;
        Elements below = children(element, walkCallEnd());
        below.resize(std::min(below.size(), mostElements - std::min(mostElements, ahead.size())));
        std::ranges::move(below, std::back_inserter(ahead));
    }
    return std::nullopt;
}

std::optional<AccessibleElement> Search::run(std::int32_t process) const {
    const auto root = program(process);
    if (!root)
        return std::nullopt;
    const Elements windows = children(*root, end_);
    const auto active = std::ranges::find_if(windows, [this](const AccessibleElement& window) {
        return !isOver() && isInState(window, activeState, end_);
    });
    const bool isOneActive = active != windows.end();
    if (const auto claimed = isOneActive ? claimants(*active) : std::nullopt) {
        // An item may be the focused one of a view that is not focused itself, while a name is being typed.
        const auto place =
            std::ranges::find_if_not(*claimed, [this](const auto& element) { return isItem(element); });
        return place == claimed->end() ? std::nullopt : std::optional(*place);
    }
    if (auto claimant = onlyClaimantInCache(*root))
        return claimant;
    return walk(isOneActive ? Elements{*active} : windows); // GTK 4 does not always tell which one is active
}

} // namespace

std::optional<AccessibleElement> searchFocus(const BusConnection& bus, std::int32_t process,
                                             Clock::time_point end, const std::stop_token& stop) {
    return Search(bus, end, stop).run(process);
}

} // namespace tavel
