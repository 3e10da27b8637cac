#pragma once

// Every pointer between the two is never null unless it says otherwise. C++ calls the words for it an
// extension.

#define OS_ASSUME_NONNULL_BEGIN                                                                              \
    _Pragma("clang assume_nonnull begin") _Pragma("clang diagnostic push")                                   \
        _Pragma("clang diagnostic ignored \"-Wnullability-extension\"")
#define OS_ASSUME_NONNULL_END _Pragma("clang diagnostic pop") _Pragma("clang assume_nonnull end")
