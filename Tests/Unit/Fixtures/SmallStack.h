#pragma once

#include <pthread.h>

#include <cstddef>
#include <functional>
#include <system_error>

namespace tavel {

/// The stack of a background job on a Mac, the smallest of all platforms.
inline constexpr std::size_t smallestStackBytes = std::size_t{512} << 10;

/// Runs `body`, which must not throw, on a thread with that stack, and waits for its end. A body that needs
/// more ends the process.
inline void runOnSmallestStack(const std::function<void()>& body) {
    const auto check = [](int error, const char* what) {
        if (error != 0)
            throw std::system_error(error, std::generic_category(), what);
    };
    pthread_attr_t attributes;
    check(pthread_attr_init(&attributes), "pthread_attr_init");
    check(pthread_attr_setstacksize(&attributes, smallestStackBytes), "pthread_attr_setstacksize");
    pthread_t thread{};
    const auto run = [](void* context) -> void* {
        (*static_cast<const std::function<void()>*>(context))();
        return nullptr;
    };
    // NOLINTNEXTLINE(cppcoreguidelines-pro-type-const-cast): a thread's argument is not const
    check(pthread_create(&thread, &attributes, run, const_cast<std::function<void()>*>(&body)),
          "pthread_create");
    check(pthread_join(thread, nullptr), "pthread_join");
    pthread_attr_destroy(&attributes);
}

} // namespace tavel
