#include "Pasteboard/Gathered.h"

#include <optional>

namespace tavel {

Gathered::Gathered(EventLoop& loop, Pasteboard& pasteboard)
    : loop_(loop), pasteboard_(pasteboard), hasNews_(pasteboard.watch({}, [&loop] { loop.stopWaiting(); })) {}

void Gathered::awaitTypes() {
    while (hasNews_ && pasteboard_.changeCount() != pasteboard_.noticedChangeCount())
        loop_.runOnce(EventLoop::unlimited);
}

void Gathered::awaitValue(const WantedValue& wanted, const std::function<void()>& read) {
    do
        awaitTypes();
    while (!readFromOneContent(wanted, read));
}

/// False if the content was replaced meanwhile.
bool Gathered::readFromOneContent(const WantedValue& wanted, const std::function<void()>& read) {
    std::optional<bool> outcome;
    const auto gathering = pasteboard_.gather({wanted}, [&](bool isCurrent) {
        outcome = isCurrent;
        loop_.stopWaiting();
        if (isCurrent)
            read();
    });
    while (!outcome)
        loop_.runOnce(EventLoop::unlimited);
    return *outcome;
}

} // namespace tavel
