#pragma once

// Includes <xcb/xkb.h>. That C header has members named `explicit`, which the macro below renames. As a
// system header, this one gets no warning for the redefined keyword.
#pragma GCC system_header

#include <xcb/xcb.h>

#include <cstdint>

#define explicit explicitComponents
#include <xcb/xkb.h>
#undef explicit
