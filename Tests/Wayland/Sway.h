#pragma once

#include "Tests/Support/TestProcess.h"
#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <string>

namespace tavel {

/// The compositor sway without a screen, on a socket of its own. It offers wlr-data-control-unstable-v1. Ends
/// with this object.
class Sway {
public:
    /// Returns when the compositor takes connections. Throws if it does not within a long time-out.
    Sway();

    /// For the variable WAYLAND_DISPLAY: the absolute path of the socket.
    const std::string& display() const { return display_; }

private:
    ScratchDirectory directory_;
    TestProcess process_;
    std::string display_;
};

} // namespace tavel
