#include "Linux/Base/Modules.h"
#include "Linux/Base/System.h"
#include "Linux/HeadlessPlatform.h"
#include "Linux/WaylandPlatform.h"
#include "Linux/X11Platform.h"

#include <cstdlib>
#include <utility>

namespace tavel {

namespace {

/// A try to use the display that an environment variable names.
struct Attempt {
    std::unique_ptr<Platform> platform; // null if it failed
    PassedOverPlace failure;            // only then
};

/// The variable's value. Null if it is unset or empty; the failure then says which.
const char* displayNamedBy(const char* variable, PassedOverPlace& failure) {
    const char* const display = std::getenv(variable); // NOLINT(concurrency-mt-unsafe)
    failure.isNamed = display != nullptr && *display != '\0';
    failure.reason = std::string(variable) + (display == nullptr ? " is not set" : " is empty");
    return failure.isNamed ? display : nullptr;
}

Attempt tryWayland() {
    Attempt attempt{nullptr, {"Wayland", {}, false}};
    const char* const display = displayNamedBy("WAYLAND_DISPLAY", attempt.failure);
    if (display == nullptr)
        return attempt;
    auto selections = WaylandSelections::open(display, modulePath("tavel-wayland"), writeToSystemLog,
                                              TransferTimeOuts{}, &attempt.failure.reason);
    if (selections != nullptr)
        attempt.platform = std::make_unique<WaylandPlatform>(std::move(selections));
    return attempt;
}

Attempt tryX11() {
    Attempt attempt{nullptr, {"X11", {}, false}};
    if (displayNamedBy("DISPLAY", attempt.failure) == nullptr)
        return attempt;
    auto connection = X11Connection::open(nullptr, X11Selections::atomNames(), &attempt.failure.reason);
    if (connection != nullptr)
        attempt.platform = std::make_unique<X11Platform>(std::move(connection));
    return attempt;
}

} // namespace

std::unique_ptr<Platform> makePlatform(std::vector<PassedOverPlace>* passedOver) {
    // Wayland first, as most compositors also run an X server, whose clipboard follows theirs only now and
    // then.
    for (const auto attemptOne : {tryWayland, tryX11}) {
        Attempt attempt = attemptOne();
        if (attempt.platform != nullptr)
            return std::move(attempt.platform);
        if (passedOver != nullptr)
            passedOver->push_back(std::move(attempt.failure));
    }
    return std::make_unique<HeadlessPlatform>();
}

} // namespace tavel
