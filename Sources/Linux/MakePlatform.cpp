#include "Linux/Base/Modules.h"
#include "Linux/Base/System.h"
#include "Linux/HeadlessPlatform.h"
#include "Linux/WaylandPlatform.h"
#include "Linux/X11Platform.h"

#include <cstdlib>

namespace tavel {

namespace {

std::unique_ptr<Platform> makeWaylandPlatform() {
    const char* const display = std::getenv("WAYLAND_DISPLAY"); // NOLINT(concurrency-mt-unsafe)
    if (display == nullptr)
        return nullptr;
    auto selections =
        WaylandSelections::open(display, modulePath("tavel-wayland"), writeToSystemLog, TransferTimeOuts{});
    return selections != nullptr ? std::make_unique<WaylandPlatform>(std::move(selections)) : nullptr;
}

} // namespace

std::unique_ptr<Platform> makePlatform() {
    // First, as most compositors also run an X server, whose clipboard follows theirs only now and then.
    if (auto wayland = makeWaylandPlatform())
        return wayland;
    if (auto connection = X11Connection::open(nullptr, X11Selections::atomNames()))
        return std::make_unique<X11Platform>(std::move(connection));
    return std::make_unique<HeadlessPlatform>();
}

} // namespace tavel
