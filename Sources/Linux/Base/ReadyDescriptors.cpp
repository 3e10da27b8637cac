#include "Linux/Base/ReadyDescriptors.h"

#include <sys/epoll.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tavel {

namespace {

/// The system takes turns among all that are ready.
constexpr int mostAtOnce = 16;

epoll_event eventFor(ReadyDescriptors::For purpose, std::uint64_t key) {
    epoll_event event{};
    if (purpose != ReadyDescriptors::For::writing)
        event.events |= EPOLLIN;
    if (purpose != ReadyDescriptors::For::reading)
        event.events |= EPOLLOUT;
    event.data.u64 = key;
    return event;
}

} // namespace

ReadyDescriptors::ReadyDescriptors() : set_(epoll_create1(EPOLL_CLOEXEC)) {
    if (!set_)
        throw std::system_error(errno, std::generic_category(), "epoll_create1");
}

bool ReadyDescriptors::add(int descriptor, For purpose, std::uint64_t key) const {
    epoll_event event = eventFor(purpose, key);
    return epoll_ctl(set_.number(), EPOLL_CTL_ADD, descriptor, &event) == 0;
}

void ReadyDescriptors::change(int descriptor, For purpose, std::uint64_t key) const {
    epoll_event event = eventFor(purpose, key);
    epoll_ctl(set_.number(), EPOLL_CTL_MOD, descriptor, &event);
}

void ReadyDescriptors::remove(int descriptor) const {
    epoll_ctl(set_.number(), EPOLL_CTL_DEL, descriptor, nullptr);
}

std::vector<std::uint64_t> ReadyDescriptors::ready() const {
    std::array<epoll_event, mostAtOnce> events{};
    const int count = epoll_wait(set_.number(), events.data(), mostAtOnce, 0);
    std::vector<std::uint64_t> keys;
    keys.reserve(mostAtOnce);
    for (int i = 0; i < count; ++i)
        keys.push_back(events[static_cast<std::size_t>(i)].data.u64);
    return keys;
}

} // namespace tavel
