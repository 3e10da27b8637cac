#pragma once

#include "Console/Trace.h"
#include "TavelClipboardAgent/main/Protocol/AgentMessage.h"

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// Compares the replies of a session with those of a recorded one: their success and their reason. Change
/// counts differ from one session to the next.
class ReplyComparison {
public:
    explicit ReplyComparison(const std::vector<TracedLine>& record);

    /// Compares a reply with the recorded one to the same request; those to one number, in order. Says what
    /// the record has instead, for people. nullopt if they agree. `requestName` is as in describeMessage.
    std::optional<std::string> compare(const Reply& reply, std::string_view requestName);

    std::size_t replies() const { return replies_; } // compared so far
    std::size_t differences() const { return differences_; }

    /// How many recorded replies have no counterpart so far.
    std::size_t missing() const;

    /// One line for people.
    std::string summary() const;

private:
    std::map<std::uint64_t, std::deque<Reply>> expected_;
    std::size_t replies_ = 0;
    std::size_t differences_ = 0;
};

} // namespace tavel
