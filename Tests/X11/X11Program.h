#pragma once

#include "Linux/Selections/TransferTimeOuts.h"
#include "Linux/X11/Selections/X11Selections.h"
#include "Tests/Selections/PasteboardProgram.h"

#include <string>

namespace tavel {

/// A program with pasteboards on an X server.
class X11Program final : public PasteboardProgram {
public:
    /// Throws std::runtime_error if there is no server.
    X11Program(const std::string& display, const TransferTimeOuts& timeOuts);

    /// Only for use within `run`.
    X11Selections& selections() { return static_cast<X11Selections&>(PasteboardProgram::selections()); }
};

} // namespace tavel
