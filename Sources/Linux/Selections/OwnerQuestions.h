#pragma once

#include "Linux/Contents/SelectionText.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// Asks the owner of one selection for what it has, in the words of a display server. Waits for no owner. One
/// thread.
class OwnerQuestions {
public:
    /// Names a question for as long as this object lives.
    using Ticket = std::uint64_t;

    virtual ~OwnerQuestions() = default;

    /// Whether the display server is lost: then nothing can be asked, and nothing is answered.
    virtual bool isLost() const = 0;

    /// To be called before a question, when other questions may have been open. May handle events.
    virtual void prepare() = 0;

    virtual Ticket askForTargets() = 0;

    /// Asks for the value of a target; of a value that is longer than `limit` bytes, for its beginning.
    virtual Ticket ask(const std::string& target, std::size_t limit) = 0;

    /// Whether the answer has come, or will not come.
    virtual bool isDecided(Ticket ticket) const = 0;

    /// Whether the owner was given up at its deadline.
    virtual bool hasTimedOut(Ticket ticket) const = 0;

    /// End the question, and give the answer if it has come. The targets are given each once, without names
    /// that are too long for a type. `isCut` of a value: these are the first `limit` + 1 bytes of a longer
    /// one. Each question is to be ended once, by the function that is meant for it.
    virtual std::vector<std::string> takeTargets(Ticket ticket) = 0;
    virtual std::optional<SelectionValue> take(Ticket ticket, const std::string& target) = 0;
};

} // namespace tavel
