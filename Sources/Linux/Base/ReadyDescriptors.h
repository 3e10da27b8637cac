#pragma once

#include "Linux/Base/Descriptor.h"

#include <cstdint>
#include <vector>

namespace tavel {

/// Descriptors that are waited for together, by one descriptor (epoll). One thread.
class ReadyDescriptors {
public:
    enum class For : std::uint8_t { reading, writing, readingAndWriting };

    /// Throws std::system_error.
    ReadyDescriptors();

    /// Readable when one of the descriptors is ready, or was closed at its other end.
    int descriptor() const { return set_.number(); }

    /// From now on, `ready` names the key when the descriptor is ready. The descriptor stays the caller's.
    /// False if the system does not wait for such a descriptor, or for no more of them.
    bool add(int descriptor, For purpose, std::uint64_t key) const;
    void change(int descriptor, For purpose, std::uint64_t key) const;

    /// To be called before the descriptor is closed: another process may have a copy of it.
    void remove(int descriptor) const;

    /// Some of the keys whose descriptors are ready now, and in time all of them. Does not wait. Throws
    /// std::bad_alloc.
    std::vector<std::uint64_t> ready() const;

private:
    Descriptor set_;
};

} // namespace tavel
