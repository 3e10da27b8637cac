#pragma once

// Pointers between the two macros are nonnull unless annotated otherwise. The pragmas silence clang's warning
// that nullability is an extension in C++.

#define OS_ASSUME_NONNULL_BEGIN                                                                              \
    _Pragma("clang assume_nonnull begin") _Pragma("clang diagnostic push")                                   \
        _Pragma("clang diagnostic ignored \"-Wnullability-extension\"")
#define OS_ASSUME_NONNULL_END _Pragma("clang diagnostic pop") _Pragma("clang assume_nonnull end")
