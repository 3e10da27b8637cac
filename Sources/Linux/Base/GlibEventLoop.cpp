#include "Linux/Base/GlibEventLoop.h"

#include <memory>
#include <new>
#include <thread>
#include <utility>

namespace tavel {

/// The event source that GLib queries before and after each wait.
struct GlibEventLoop::PostSource {
    GSource base;
    GlibEventLoop* loop;

    static gboolean prepare(GSource* source, gint* timeout) {
        GlibEventLoop* const loop = reinterpret_cast<PostSource*>(source)->loop;
        // Limits the wait without a timer source, which would cost a system call per pass.
        *timeout = loop->longestWait_;
        return loop->hasWork() ? TRUE : FALSE;
    }

    static gboolean check(GSource* source) {
        return reinterpret_cast<PostSource*>(source)->loop->hasWork() ? TRUE : FALSE;
    }

    static gboolean dispatch(GSource* source, GSourceFunc, gpointer) {
        reinterpret_cast<PostSource*>(source)->loop->runPosted();
        return G_SOURCE_CONTINUE;
    }

    static GSourceFuncs functions;
};

GSourceFuncs GlibEventLoop::PostSource::functions = {prepare, check, dispatch, nullptr, nullptr, nullptr};

GlibEventLoop::GlibEventLoop() : context_(g_main_context_ref(g_main_context_default())) {
    GSource* const source = g_source_new(&PostSource::functions, sizeof(PostSource));
    postSource_ = reinterpret_cast<PostSource*>(source);
    postSource_->loop = this;
    g_source_attach(source, context_);
}

GlibEventLoop::~GlibEventLoop() {
    // The main context outlives this loop, and it must not call functions whose captures are gone.
    for (GSource* const timer : std::exchange(timers_, {}))
        g_source_destroy(timer);
    g_source_destroy(&postSource_->base);
    g_source_unref(&postSource_->base);
    g_main_context_unref(context_);
}

void GlibEventLoop::runOnce(std::chrono::milliseconds longestWait) {
    longestWait_ = longestWait == unlimited ? -1 : static_cast<int>(longestWait.count());
    g_main_context_iteration(context_, TRUE);
}

void GlibEventLoop::post(Function function) {
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(function));
    }
    g_main_context_wakeup(context_);
}

void GlibEventLoop::postAfter(std::chrono::milliseconds delay, Function function) {
    attachTimer(delay, std::move(function), false);
}

void GlibEventLoop::repeat(std::chrono::milliseconds interval, Function function) {
    attachTimer(interval, std::move(function), true);
}

void GlibEventLoop::runInBackground(Function job) {
    std::thread(std::move(job)).detach();
}

void GlibEventLoop::stopWaiting() {
    {
        const std::lock_guard lock(mutex_);
        stopRequested_ = true;
    }
    g_main_context_wakeup(context_);
}

bool GlibEventLoop::hasWork() {
    const std::lock_guard lock(mutex_);
    return stopRequested_ || !posted_.empty();
}

void GlibEventLoop::runPosted() {
    std::vector<Function> ready;
    {
        const std::lock_guard lock(mutex_);
        ready.swap(posted_);
        stopRequested_ = false;
    }
    for (Function& function : ready)
        runOrAbandon(std::exchange(function, nullptr)); // releases its captures before the next function runs
}

void GlibEventLoop::attachTimer(std::chrono::milliseconds delay, Function function, bool repeats) {
    struct Timer {
        GlibEventLoop* loop;
        GSource* source;
        Function function;
        bool repeats;
    };

    auto made = std::make_unique<Timer>(Timer{this, nullptr, std::move(function), repeats});
    GSource* const source = g_timeout_source_new(static_cast<guint>(delay.count()));
    try {
        timers_.insert(source);
    } catch (const std::bad_alloc&) {
        g_source_unref(source);
        throw;
    }
    made->source = source;
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            auto* const timer = static_cast<Timer*>(data);
            runOrAbandon(timer->function);
            return timer->repeats ? G_SOURCE_CONTINUE : G_SOURCE_REMOVE;
        },
        made.release(),
        [](gpointer data) {
            const std::unique_ptr<Timer> timer(static_cast<Timer*>(data));
            timer->loop->timers_.erase(timer->source);
        });
    g_source_attach(source, context_);
    g_source_unref(source);
}

} // namespace tavel
