#include "Tests/Wayland/Selections.h"

#include <algorithm>
#include <utility>

namespace tavel {

namespace {

constexpr std::array kinds{WaylandSelectionKind::clipboard, WaylandSelectionKind::primary};

} // namespace

void Selections::add(SelectionDevice& device) {
    devices_.push_back(&device);
    for (const WaylandSelectionKind kind : kinds) {
        if (source(kind) != nullptr || options_.tellsNewDevicesOfNoContent)
            device.tell(kind, source(kind));
    }
}

void Selections::remove(SelectionDevice& device) {
    std::erase(devices_, &device);
}

void Selections::finishDevices() {
    for (SelectionDevice* const device : std::exchange(devices_, {}))
        device->finish();
}

void Selections::select(WaylandSelectionKind kind, std::shared_ptr<SelectionSource> source,
                        const void* setter) {
    const std::shared_ptr<SelectionSource> former = std::exchange(at(kind).source, std::move(source));
    if (former != nullptr && former != at(kind).source)
        former->cancel();
    tellAll(kind, setter);
}

void Selections::drop(const SelectionSource& source) {
    for (const WaylandSelectionKind kind : kinds) {
        if (at(kind).source.get() == &source) {
            at(kind).source.reset();
            tellAll(kind, nullptr);
        }
    }
}

const std::shared_ptr<SelectionSource>& Selections::source(WaylandSelectionKind kind) const {
    return at(kind).source;
}

bool Selections::isSelected(const SelectionSource& source) const {
    return std::ranges::any_of(selections_,
                               [&](const Selection& one) { return one.source.get() == &source; });
}

std::size_t Selections::changesOf(WaylandSelectionKind kind) const {
    return at(kind).changes;
}

void Selections::tellAll(WaylandSelectionKind kind, const void* setter) {
    ++at(kind).changes;
    for (SelectionDevice* const device : devices_) {
        if (setter != nullptr && !options_.tellsSetter && device->belongsTo(setter))
            continue;
        for (int time = 0; time < options_.timesTold; ++time)
            device->tell(kind, source(kind));
    }
}

} // namespace tavel
