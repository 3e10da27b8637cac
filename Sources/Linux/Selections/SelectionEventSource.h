#pragma once

#include "Linux/Selections/DisplaySelections.h"

#include <glib.h>

#include <memory>

namespace tavel {

/// Serves the selections in GLib's default main context while this object exists. Inactive once the server is
/// lost.
class SelectionEventSource {
public:
    explicit SelectionEventSource(std::shared_ptr<DisplaySelections> selections);
    ~SelectionEventSource();
    SelectionEventSource(const SelectionEventSource&) = delete;
    SelectionEventSource& operator=(const SelectionEventSource&) = delete;

private:
    struct Source;

    std::shared_ptr<DisplaySelections> selections_;
    Source* source_;
};

} // namespace tavel
