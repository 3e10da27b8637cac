#include "Linux/WaylandPlatform.h"

#include "Linux/Selections/SelectionPasteboard.h"
#include "Linux/Store/StoreDirectory.h"

#include <cstdlib>
#include <utility>

namespace tavel {

WaylandPlatform::WaylandPlatform(std::shared_ptr<WaylandSelections> selections)
    : KeylessPlatform("Wayland has no portable way to intercept a key for one window, or to type one"),
      selections_(std::move(selections)), events_(selections_) {}

std::shared_ptr<Pasteboard> WaylandPlatform::openPasteboard(const std::optional<std::string>& name) {
    if (!selections_->has(name))
        return store_.open(name);
    return std::make_shared<SelectionPasteboard>(selections_, name);
}

std::string WaylandPlatform::describePasteboard(const std::optional<std::string>& name) {
    if (!selections_->has(name))
        return "the pasteboards in " + pasteboardStoreDirectory().string() +
               ", as Wayland has none of that name";
    const char* const display = std::getenv("WAYLAND_DISPLAY"); // NOLINT(concurrency-mt-unsafe)
    return std::string(name ? "the primary selection" : "the clipboard") + " of the Wayland compositor " +
           (display == nullptr ? std::string() : std::string(display) + " ") + "(" +
           selections_->connection().protocol() + ")";
}

} // namespace tavel
