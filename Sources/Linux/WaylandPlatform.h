#pragma once

#include "Linux/KeylessPlatform.h"
#include "Linux/Selections/SelectionEventSource.h"
#include "Linux/Store/StorePasteboards.h"
#include "Linux/Wayland/WaylandSelections.h"

#include <memory>
#include <optional>
#include <string>

namespace tavel {

/// The platform of a desktop whose Wayland compositor offers data control. The clipboard and, under the name
/// PRIMARY, the primary selection serve as pasteboards. Pasteboards of other names are in the user's store.
///
/// Wayland has no portable way to intercept a key for one window, or to type one.
class WaylandPlatform final : public KeylessPlatform {
public:
    explicit WaylandPlatform(std::shared_ptr<WaylandSelections> selections);

    std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) override;
    std::string describePasteboard(const std::optional<std::string>& name) override;
    void expectEnd() override { selections_->connection().expectEnd(); }
    bool servesContents() override { return selections_->isServing(); }
    void handOverContents() override {} // no clipboard manager of Wayland can be asked to take a content over

private:
    std::shared_ptr<WaylandSelections> selections_;
    SelectionEventSource events_;
    StorePasteboards store_;
};

} // namespace tavel
