#include "Linux/Selections/SelectionEventSource.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

namespace tavel {

/// The GSource, whose functions GLib calls before and after each wait.
struct SelectionEventSource::Source {
    GSource base;
    DisplaySelections* selections;
    gpointer descriptor;

    static Source& from(GSource* source) { return *reinterpret_cast<Source*>(source); }

    static gboolean prepare(GSource* source, gint* timeout) {
        *timeout = -1;
        Source& self = from(source);
        self.selections->flush();
        if (const auto deadline = self.selections->nextDeadline())
            *timeout = remaining(*deadline);
        return self.selections->hasWork() || *timeout == 0 ? TRUE : FALSE;
    }

    static gboolean check(GSource* source) {
        const Source& self = from(source);
        const auto deadline = self.selections->nextDeadline();
        return g_source_query_unix_fd(source, self.descriptor) != 0 || self.selections->hasWork() ||
                       (deadline && remaining(*deadline) == 0)
                   ? TRUE
                   : FALSE;
    }

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        DisplaySelections& selections = *from(source).selections;
        try {
            selections.dispatch();
        } catch (const std::bad_alloc&) {
            // Tried again with the next event. GLib's code must see no exception.
        }
        // The descriptor of a lost connection stays readable and would make the loop spin.
        return selections.isLost() && !selections.hasWork() ? G_SOURCE_REMOVE : G_SOURCE_CONTINUE;
    }

    /// Milliseconds until the deadline, rounded up.
    static gint remaining(DisplaySelections::Clock::time_point deadline) {
        const auto wait =
            std::chrono::ceil<std::chrono::milliseconds>(deadline - DisplaySelections::Clock::now());
        return static_cast<gint>(std::clamp<std::int64_t>(wait.count(), 0, G_MAXINT));
    }

    static GSourceFuncs functions;
};

GSourceFuncs SelectionEventSource::Source::functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};

SelectionEventSource::SelectionEventSource(std::shared_ptr<DisplaySelections> selections)
    : selections_(std::move(selections)),
      source_(reinterpret_cast<Source*>(g_source_new(&Source::functions, sizeof(Source)))) {
    source_->selections = selections_.get();
    source_->descriptor = g_source_add_unix_fd(&source_->base, selections_->descriptor(), G_IO_IN);
    // Of the same priority as timers and commands: a higher one would starve them while events pour in.
    // Sources of one priority take turns in the order in which they were attached, so a poll at the same time
    // as a change already sees it.
    g_source_attach(&source_->base, nullptr);
}

SelectionEventSource::~SelectionEventSource() {
    g_source_destroy(&source_->base);
    g_source_unref(&source_->base);
}

} // namespace tavel
