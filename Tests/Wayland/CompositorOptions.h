#pragma once

namespace tavel {

/// What a compositor for tests offers, and where it differs from others.
struct CompositorOptions {
    bool offersExt = true; // ext-data-control-v1
    bool offersWlr = true; // wlr-data-control-unstable-v1

    /// Whether it passes a primary selection on. Without one, version 1 of wlr-data-control is offered.
    bool hasPrimary = true;

    bool hasSeat = true;

    /// Whether a new device is told that there is no content. KWin 5.27 says nothing then.
    bool tellsNewDevicesOfNoContent = true;

    /// Whether the client that sets a selection is told of it as well.
    bool tellsSetter = true;

    /// How often each selection is told, with an offer of its own each time.
    int timesTold = 1;
};

} // namespace tavel
