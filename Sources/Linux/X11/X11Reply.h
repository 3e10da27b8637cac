#pragma once

#include <cstdlib>
#include <memory>

namespace tavel {

struct X11Free {
    void operator()(void* memory) const { std::free(memory); }
};

/// A reply or an event, which xcb hands over in memory from malloc.
template <typename Kind>
using X11Reply = std::unique_ptr<Kind, X11Free>;

} // namespace tavel
