#pragma once

// Declarations that the language itself needs.

#include <cstddef>

/// bool on Apple silicon only. Elsewhere a signed char, which loses the higher bits of a mask.
#if defined(__aarch64__)
typedef bool BOOL;
#else
typedef signed char BOOL;
#endif

#define YES __objc_yes
#define NO __objc_no
#define nil nullptr

#define OBJC_EXPORT extern "C" __attribute__((visibility("default")))
