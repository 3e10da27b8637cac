#pragma once

#include "Linux/Selections/TransferTimeOuts.h"
#include "Linux/Wayland/WaylandSelections.h"
#include "Tests/Selections/PasteboardProgram.h"

#include <memory>
#include <string>

namespace tavel {

/// The selections of the compositor with that socket; null, with a refusal, as `WaylandSelections::open`
/// says.
std::shared_ptr<WaylandSelections>
openSelections(const std::string& display, const TransferTimeOuts& timeOuts, std::string* refusal = nullptr);

/// A program with pasteboards on a Wayland compositor: the clipboard, and the primary selection.
class WaylandProgram final : public PasteboardProgram {
public:
    /// Throws std::runtime_error if there is no compositor with data control.
    WaylandProgram(const std::string& display, const TransferTimeOuts& timeOuts);

    /// Only for use within `run`.
    WaylandSelections& selections() {
        return static_cast<WaylandSelections&>(PasteboardProgram::selections());
    }
};

} // namespace tavel
