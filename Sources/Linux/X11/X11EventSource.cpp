#include "Linux/X11/X11EventSource.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace tavel {

/// The GSource, whose functions GLib calls before and after each wait.
struct X11EventSource::Source {
    GSource base;
    X11Selections* selections;
    gpointer descriptor;

    static Source& from(GSource* source) { return *reinterpret_cast<Source*>(source); }

    /// Events that xcb read together with a reply are in its queue, and do not make the descriptor readable.
    static gboolean prepare(GSource* source, gint* timeout) {
        *timeout = -1;
        Source& self = from(source);
        X11Connection& connection = self.selections->connection();
        xcb_flush(connection.get());
        if (const auto deadline = self.selections->nextDeadline())
            *timeout = remaining(*deadline);
        return connection.hasQueuedEvent() || self.selections->hasWork() || *timeout == 0 ? TRUE : FALSE;
    }

    static gboolean check(GSource* source) {
        Source& self = from(source);
        const auto deadline = self.selections->nextDeadline();
        return g_source_query_unix_fd(source, self.descriptor) != 0 ||
                       self.selections->connection().hasQueuedEvent() || self.selections->hasWork() ||
                       (deadline && remaining(*deadline) == 0)
                   ? TRUE
                   : FALSE;
    }

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        X11Selections& selections = *from(source).selections;
        selections.connection().dispatchEvents();
        try {
            selections.proceed(X11Selections::Clock::now());
        } catch (const std::bad_alloc&) {
            // Tried again with the next event. GLib's code must see no exception.
        }
        // The descriptor of a lost connection stays readable and would make the loop spin.
        return selections.connection().isLost() && !selections.hasWork() ? G_SOURCE_REMOVE
                                                                         : G_SOURCE_CONTINUE;
    }

    /// Milliseconds until the deadline, rounded up.
    static gint remaining(X11Selections::Clock::time_point deadline) {
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - X11Selections::Clock::now());
        return static_cast<gint>(std::clamp<std::int64_t>(wait.count(), 0, G_MAXINT));
    }

    static GSourceFuncs functions;
};

GSourceFuncs X11EventSource::Source::functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};

X11EventSource::X11EventSource(std::shared_ptr<X11Selections> selections)
    : selections_(std::move(selections)),
      source_(reinterpret_cast<Source*>(g_source_new(&Source::functions, sizeof(Source)))) {
    source_->selections = selections_.get();
    source_->descriptor =
        g_source_add_unix_fd(&source_->base, selections_->connection().descriptor(), G_IO_IN);
    // Of the same priority as timers and commands: a higher one would starve them while events pour in.
    // Sources of one priority take turns in the order in which they were attached, so a poll at the same time
    // as a change already sees it.
    g_source_attach(&source_->base, nullptr);
}

X11EventSource::~X11EventSource() {
    g_source_destroy(&source_->base);
    g_source_unref(&source_->base);
}

} // namespace tavel
