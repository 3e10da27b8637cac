#include "Linux/X11/Focus/MainLoopReminder.h"

#include <memory>
#include <utility>

namespace tavel {

void MainLoopReminder::remind() {
    const std::lock_guard lock(mutex_);
    if (ended_ || source_ != nullptr)
        return;
    source_ = g_timeout_source_new(static_cast<guint>(delay_.count()));
    dueSelf_ = shared_from_this();
    g_source_set_callback(source_, dispatch, this, nullptr);
    g_source_attach(source_, nullptr);
    g_source_unref(source_); // the main context keeps a reference
}

void MainLoopReminder::end() {
    std::shared_ptr<MainLoopReminder> self;
    const std::lock_guard lock(mutex_);
    ended_ = true;
    if (source_ != nullptr)
        g_source_destroy(std::exchange(source_, nullptr));
    self = std::move(dueSelf_);
}

gboolean MainLoopReminder::dispatch(gpointer data) {
    MainLoopReminder& reminder = *static_cast<MainLoopReminder*>(data);
    std::shared_ptr<MainLoopReminder> self;
    {
        const std::lock_guard lock(reminder.mutex_);
        reminder.source_ = nullptr;
        self = std::move(reminder.dueSelf_);
    }
    self->function_();
    return G_SOURCE_REMOVE;
}

} // namespace tavel
