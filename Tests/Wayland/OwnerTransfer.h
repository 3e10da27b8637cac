#pragma once

#include "Linux/Base/Descriptor.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string_view>

namespace tavel {

/// The writing end of what another program reads from an owner. Closed with this object. Any thread.
///
/// What waits ends when the owner does. No signal is raised for a reader that is gone.
class OwnerTransfer {
public:
    /// The reader's descriptor, and the descriptor that is readable once the owner is ending.
    OwnerTransfer(Descriptor writeEnd, std::shared_ptr<const Descriptor> end)
        : writeEnd_(std::move(writeEnd)), end_(std::move(end)) {}

    /// Writes everything, and waits for the reader where necessary. False if the rest cannot be written: the
    /// reader or this end is closed, or the owner is ending.
    bool write(std::string_view bytes);

    /// Waits until the reader has read everything so far. False as above. Pipes only.
    bool awaitReading();

    /// Waits until the reader has closed its end. False if the owner is ending.
    bool awaitReaderEnd();

    /// Waits for what is going on in other threads.
    void close();

private:
    bool awaitReadiness(short events) const;

    std::mutex mutex_;
    std::optional<Descriptor> writeEnd_;
    std::shared_ptr<const Descriptor> end_;
};

} // namespace tavel
