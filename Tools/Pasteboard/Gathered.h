#pragma once

#include "Platform/EventLoop.h"
#include "Platform/Pasteboard.h"

#include <functional>

namespace tavel {

/// Reads the contents of a pasteboard that another program may have to deliver: waits for it and runs the
/// event loop meanwhile. Ends only with the owner's answer, or when the platform gives up a silent owner.
class Gathered {
public:
    /// Both must outlive this object; the pasteboard must not be watched otherwise.
    Gathered(EventLoop& loop, Pasteboard& pasteboard);

    /// The current content is known: its types can be read.
    void awaitTypes();

    /// Runs `read`, which must not throw, once the value can be read in it: if the current content offers it
    /// and its owner delivers.
    void awaitValue(const WantedValue& wanted, const std::function<void()>& read);

private:
    bool readFromOneContent(const WantedValue& wanted, const std::function<void()>& read);

    EventLoop& loop_;
    Pasteboard& pasteboard_;
    bool hasNews_; // without news of contents, the platform knows each of them at once
};

} // namespace tavel
