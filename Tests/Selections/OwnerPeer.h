#pragma once

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace tavel {

/// Another program that owns the general selection of a display server, and does what the test says. It
/// answers on a thread of its own, a request at a time. Any thread may call any operation, actions included.
/// Without the server, the operations do nothing.
class OwnerPeer {
public:
    virtual ~OwnerPeer() = default;

    /// Sets what the next `take` offers.
    virtual void offer(const std::vector<std::string>& targets) = 0;

    // Set what the owner does from now on when it is asked for the target.

    /// Gives the value.
    virtual void give(const std::string& target, std::string bytes) = 0;

    /// Gives the value in these parts, each when the reader has taken the one before.
    virtual void giveParts(const std::string& target, std::vector<std::string> parts) = 0;

    /// Waits until the reader has taken this beginning, runs the action, and says nothing more. Without a
    /// beginning, it says nothing at all.
    virtual void stopAfter(const std::string& target, const std::string& beginning,
                           std::function<void()> action) = 0;

    void beSilent(const std::string& target) {
        stopAfter(target, "", [] {});
    }

    void offerValue(const std::string& target, std::string bytes) {
        offer({target});
        give(target, std::move(bytes));
    }

    /// Gives the value for the first request for the target, about which the owner was silent. Returns when
    /// the reader has taken it, or does not want it any more.
    virtual void answerLate(const std::string& target, std::string bytes) = 0;

    virtual void take() = 0;
    virtual void release() = 0;

    /// Ends the program, as a crash does.
    virtual void disconnect() = 0;

    /// The targets of all requests for values so far, that of a request which is being answered included.
    virtual std::vector<std::string> requests() = 0;

    std::size_t countOf(const std::string& target) {
        return static_cast<std::size_t>(std::ranges::count(requests(), target));
    }

    /// Waits for the request of that number for the target, counted from 1. Throws std::runtime_error after
    /// a long time-out.
    virtual void awaitRequest(const std::string& target, std::size_t number = 1) = 0;
};

} // namespace tavel
