#pragma once

#include "Platform/EventLoop.h"

#include <glib.h>

#include <mutex>
#include <unordered_set>
#include <vector>

namespace tavel {

/// The event loop on GLib's default main context, which desktop libraries use as well. One instance per
/// process.
class GlibEventLoop final : public EventLoop {
public:
    GlibEventLoop();
    ~GlibEventLoop() override;
    GlibEventLoop(const GlibEventLoop&) = delete;
    GlibEventLoop& operator=(const GlibEventLoop&) = delete;

    void runOnce(std::chrono::milliseconds longestWait) override;
    void post(Function function) override;
    void postAfter(std::chrono::milliseconds delay, Function function) override;
    void repeat(std::chrono::milliseconds interval, Function function) override;
    void runInBackground(Function job) override;
    void stopWaiting() override;

private:
    struct PostSource;

    bool hasWork();
    void runPosted();
    void attachTimer(std::chrono::milliseconds delay, Function function, bool repeats);

    GMainContext* context_;
    PostSource* postSource_;
    int longestWait_ = 0; // milliseconds, for the current pass
    std::unordered_set<GSource*> timers_;

    // Our own queue, not GLib's idle sources: EventLoop promises the order of posting.
    std::mutex mutex_;
    std::vector<Function> posted_;
    bool stopRequested_ = false;
};

} // namespace tavel
