#pragma once

#include "Linux/Selections/ForeignContent.h"
#include "Linux/Selections/OwnedContent.h"
#include "Linux/Selections/OwnerQuestions.h"
#include "Linux/Selections/TransferTimeOuts.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <utility>

namespace tavel {

/// The state of one selection of a display server, shared by all pasteboards of this process that use it. One
/// thread.
class Selection {
public:
    using Clock = ForeignContent::Clock;

    Selection(std::unique_ptr<OwnerQuestions> questions, const TransferTimeOuts& timeOuts)
        : foreign(std::move(questions), timeOuts) {}
    virtual ~Selection() = default;
    Selection(const Selection&) = delete;
    Selection& operator=(const Selection&) = delete;

    /// Handles all events from before now. One round trip to the display server.
    virtual void synchronize() = 0;

    /// Whether the display server is lost.
    virtual bool isLost() const = 0;

    /// Becomes the owner of the selection with this content. Gives the change count of doing so, also if
    /// another program has taken the selection since. nullopt if the display server does not let it, or is
    /// lost.
    virtual std::optional<std::int64_t> own(OwnedContent content) = 0;

    /// Whether `proceed` or `tell` has something to do now.
    bool hasWork() const;

    /// Goes on with what is gathered, as far as that needs no wait for another program.
    void proceed(Clock::time_point now) { foreign.proceed(now); }

    /// Tells callers of what has ended. To be called where events may be dispatched.
    void tell();

    /// Changes of the owner, ours included, since we began watching. An owner that exits is no change.
    std::int64_t changeCount = 0;

    /// Our content while we own the selection, otherwise null.
    std::shared_ptr<const OwnedContent> owned;

    /// What another program owns. Its change count is the one that has been noticed.
    ForeignContent foreign;

    /// Runs after the noticed change count has moved from this one. Empty: nobody wants to know.
    std::function<void()> noticed;
    std::int64_t lastNoticed = -1;
};

} // namespace tavel
