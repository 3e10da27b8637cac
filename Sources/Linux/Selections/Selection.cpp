#include "Linux/Selections/Selection.h"

#include "Platform/EventLoop.h"

#include <utility>

namespace tavel {

bool Selection::hasWork() const {
    return foreign.hasWork() || (noticed && lastNoticed != foreign.changeCount());
}

void Selection::tell() {
    foreign.runFinished();
    if (std::exchange(lastNoticed, foreign.changeCount()) != foreign.changeCount() && noticed)
        runOrAbandon(noticed);
}

} // namespace tavel
