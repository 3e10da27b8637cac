#pragma once

#include "Linux/X11/Selections/X11Selections.h"

#include <glib.h>

#include <memory>

namespace tavel {

/// Serves the selections in GLib's default main context while this object exists. Inactive once the server is
/// lost.
class X11EventSource {
public:
    explicit X11EventSource(std::shared_ptr<X11Selections> selections);
    ~X11EventSource();
    X11EventSource(const X11EventSource&) = delete;
    X11EventSource& operator=(const X11EventSource&) = delete;

private:
    struct Source;

    std::shared_ptr<X11Selections> selections_;
    Source* source_;
};

} // namespace tavel
