#pragma once

#include <glib.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace tavel {

/// Calls a function on GLib's default main context whenever the descriptor is readable or closed by its peer,
/// as long as this object lives. The function may destroy this object. Main thread only.
class DescriptorWatch {
public:
    /// The descriptor remains the caller's.
    DescriptorWatch(int descriptor, std::function<void()> ready);
    ~DescriptorWatch();
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

    /// Makes the main context call the function once more, whatever the descriptor's state is.
    void call() const { g_source_set_ready_time(source_, 0); }

private:
    GSource* source_;
};

/// Splits what a descriptor delivers into lines. The peer is not trusted.
class ReceivedLines {
public:
    static constexpr std::size_t longestLine = std::size_t{64} * 1024;

    /// Reads once. Waits only if the descriptor is blocking and has no data. False at the end of the input,
    /// after a read error, or when a line is too long: call it no more then.
    bool receive(int descriptor);

    /// The next complete line, without its line feed.
    std::optional<std::string> next();

private:
    std::string received_;
};

} // namespace tavel
