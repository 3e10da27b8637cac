#pragma once

#include <cassert>
#include <thread>

namespace tavel {

/// A member of an object that one thread makes and uses, mostly the main thread. Debug builds check the
/// thread; with NDEBUG nothing is stored or checked.
class OwnerThread {
public:
    /// Ends the process with a message unless the calling thread is the one that made this object.
    void assertCurrent() const { assert(std::this_thread::get_id() == maker_ && "used on another thread"); }

private:
#ifndef NDEBUG
    std::thread::id maker_ = std::this_thread::get_id();
#endif
};

} // namespace tavel
