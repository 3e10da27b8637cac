#pragma once

#include "Linux/Wayland/Protocol/DataControlInterfaces.h"
#include "Tests/Wayland/Selections.h"

#include <wayland-server-core.h>

#include <cstdint>
#include <functional>

namespace tavel {

/// The compositor's side of one of the protocols for data control, as a global of a display. Its parts
/// translate between clients and selections. It must live as long as the display, whose thread it uses.
class DataControlGlobal {
public:
    /// Returns when the client's socket takes a few dozen more events.
    using AwaitRoom = std::function<void(wl_client*)>;

    struct Protocol {
        const DataControlInterfaces* interfaces;
        int version;
        int primarySince; // the version that has the primary selection
    };

    static Protocol ext();
    static Protocol wlr(int version); // 1 or 2

    DataControlGlobal(wl_display* display, const Protocol& protocol, Selections& selections, bool hasPrimary,
                      AwaitRoom awaitRoom);
    ~DataControlGlobal() = default;
    DataControlGlobal(const DataControlGlobal&) = delete;
    DataControlGlobal& operator=(const DataControlGlobal&) = delete;

    const DataControlInterfaces& interfaces() const { return *protocol_.interfaces; }
    Selections& selections() const { return selections_; }
    void awaitRoom(wl_client* client) const { awaitRoom_(client); }

    /// Whether a device of that version knows the primary selection.
    bool hasPrimary(int version) const { return hasPrimary_ && version >= protocol_.primarySince; }

private:
    static void bind(wl_client* client, void* global, std::uint32_t version, std::uint32_t number);

    Protocol protocol_;
    Selections& selections_;
    bool hasPrimary_;
    AwaitRoom awaitRoom_;
};

} // namespace tavel
