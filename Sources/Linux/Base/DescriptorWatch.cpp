#include "Linux/Base/DescriptorWatch.h"

#include <glib-unix.h>

#include <memory>
#include <utility>

namespace tavel {

namespace {

using Function = EventLoop::Function;

gboolean callFunction(gint, GIOCondition, gpointer function) {
    g_source_set_ready_time(g_main_current_source(), -1);
    runOrAbandon(*static_cast<Function*>(function));
    return G_SOURCE_CONTINUE;
}

/// GLib defers this until no call of the function is under way.
void deleteFunction(gpointer function) {
    const std::unique_ptr<Function> owned(static_cast<Function*>(function));
}

} // namespace

DescriptorWatch::DescriptorWatch(int descriptor, Function ready) {
    auto function = std::make_unique<Function>(std::move(ready));
    source_ = g_unix_fd_source_new(descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR));
    g_source_set_callback(source_, G_SOURCE_FUNC(callFunction), function.release(), deleteFunction);
    g_source_attach(source_, nullptr);
}

DescriptorWatch::~DescriptorWatch() {
    g_source_destroy(source_);
    g_source_unref(source_);
}

} // namespace tavel
