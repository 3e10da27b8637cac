#include "Console/Watch.h"

#include <glib-unix.h>

#include <utility>

namespace tavel {

namespace {

gboolean callDescriptorAction(gint, GIOCondition, gpointer data) {
    (*static_cast<Watch::Action*>(data))();
    return G_SOURCE_CONTINUE;
}

gboolean callAction(gpointer data) {
    (*static_cast<Watch::Action*>(data))();
    return G_SOURCE_CONTINUE;
}

gboolean callActionOnce(gpointer data) {
    (*static_cast<Watch::Action*>(data))();
    return G_SOURCE_REMOVE;
}

void callProcessAction(GPid, gint status, gpointer data) {
    (*static_cast<std::function<void(int)>*>(data))(status);
}

template <typename Function>
GSource* attached(GSource* source, GSourceFunc callback, Function function) {
    g_source_set_callback(source, callback, new Function(std::move(function)),
                          [](gpointer data) { delete static_cast<Function*>(data); });
    g_source_attach(source, nullptr);
    return source;
}

GSource* descriptorSource(int descriptor, unsigned condition, Watch::Action action) {
    GSource* const source = g_unix_fd_source_new(descriptor, static_cast<GIOCondition>(condition));
    return attached(source, G_SOURCE_FUNC(callDescriptorAction), std::move(action));
}

} // namespace

Watch::~Watch() {
    if (source_ == nullptr)
        return;
    g_source_destroy(source_);
    g_source_unref(source_);
}

Watch::Watch(Watch&& other) noexcept : source_(std::exchange(other.source_, nullptr)) {}

Watch& Watch::operator=(Watch&& other) noexcept {
    std::swap(source_, other.source_);
    // Ends the former watch now, not when `other` is destroyed.
    const Watch old = std::move(other);
    return *this;
}

Watch Watch::readable(int descriptor, Action action) {
    return Watch(descriptorSource(descriptor, G_IO_IN | G_IO_HUP | G_IO_ERR, std::move(action)));
}

Watch Watch::writable(int descriptor, Action action) {
    return Watch(descriptorSource(descriptor, G_IO_OUT | G_IO_HUP | G_IO_ERR, std::move(action)));
}

Watch Watch::signal(int number, Action action) {
    return Watch(attached(g_unix_signal_source_new(number), callAction, std::move(action)));
}

Watch Watch::after(std::chrono::milliseconds delay, Action action) {
    GSource* const source = g_timeout_source_new(static_cast<guint>(delay.count()));
    return Watch(attached(source, callActionOnce, std::move(action)));
}

Watch Watch::processEnd(pid_t process, std::function<void(int)> action) {
    GSource* const source = g_child_watch_source_new(process);
    return Watch(attached(source, G_SOURCE_FUNC(callProcessAction), std::move(action)));
}

bool runUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
    bool timedOut = false;
    const Watch timer = Watch::after(timeout, [&] { timedOut = true; });
    while (!done() && !timedOut)
        g_main_context_iteration(nullptr, TRUE);
    return done();
}

} // namespace tavel
