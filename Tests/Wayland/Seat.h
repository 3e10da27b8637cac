#pragma once

#include <wayland-server-core.h>

namespace tavel {

/// Offers a seat without devices, with the name "seat0". Data control asks for no more.
void offerSeat(wl_display* display);

} // namespace tavel
