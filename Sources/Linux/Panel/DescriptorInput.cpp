#include "Linux/Panel/DescriptorInput.h"

#include <glib-unix.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <memory>
#include <utility>

namespace tavel {

namespace {

using Function = std::function<void()>;

gboolean callFunction(gint, GIOCondition, gpointer function) {
    g_source_set_ready_time(g_main_current_source(), -1);
    (*static_cast<Function*>(function))();
    return G_SOURCE_CONTINUE;
}

/// GLib defers this until no call of the function is under way.
void deleteFunction(gpointer function) {
    const std::unique_ptr<Function> owned(static_cast<Function*>(function));
}

} // namespace

DescriptorWatch::DescriptorWatch(int descriptor, std::function<void()> ready)
    : source_(g_unix_fd_source_new(descriptor, static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR))) {
    g_source_set_callback(source_, G_SOURCE_FUNC(callFunction), new Function(std::move(ready)),
                          deleteFunction);
    g_source_attach(source_, nullptr);
}

DescriptorWatch::~DescriptorWatch() {
    g_source_destroy(source_);
    g_source_unref(source_);
}

bool ReceivedLines::receive(int descriptor) {
    std::array<char, 4096> buffer{};
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0)
        return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR;
    received_.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0 && (received_.size() <= longestLine || received_.find('\n') != std::string::npos);
}

std::optional<std::string> ReceivedLines::next() {
    const std::size_t lineFeed = received_.find('\n');
    if (lineFeed == std::string::npos)
        return std::nullopt;
    std::string line = received_.substr(0, lineFeed);
    received_.erase(0, lineFeed + 1);
    return line;
}

} // namespace tavel
