#pragma once

// The library's header is C: it names two members with a keyword of C++, which compilers warn of replacing.
#pragma GCC system_header

#include <xcb/xcb.h>

#include <cstdint>

#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit
