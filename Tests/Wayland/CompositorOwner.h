#pragma once

#include "Linux/Base/Descriptor.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/OwnerTransfer.h"

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tavel {

/// A program that owns selections and answers each request by a script of the test, on its own thread. It is
/// played inside the compositor, whose clients see no difference, and must end before that object. Any thread
/// may call any operation, scripts included. After `disconnect` they do nothing.
class CompositorOwner {
public:
    using Kind = Compositor::Kind;

    struct Request {
        Kind kind;
        std::string type;
        /// Whoever copies the pointer keeps the transfer open, unless somebody closes it.
        std::shared_ptr<OwnerTransfer> transfer;
    };

    /// Handles a request. Runs on the owner's thread, which answers no other request until it returns. The
    /// transfer is closed then, unless somebody keeps it.
    using Script = std::function<void(const Request&)>;

    explicit CompositorOwner(Compositor& compositor);
    ~CompositorOwner();
    CompositorOwner(const CompositorOwner&) = delete;
    CompositorOwner& operator=(const CompositorOwner&) = delete;

    /// Sets the script for a type. The owner closes a request for a type without a script at once.
    void on(const std::string& type, Script script);

    /// Sets what the next `take` offers: any number of types, in this order, with duplicates if there are.
    void offer(std::vector<std::string> types);

    /// Offers one type, with this value.
    void offerValue(const std::string& type, std::string bytes);

    /// Makes the present offer the selection.
    void take(Kind kind = Kind::clipboard);

    /// Gives the selection up, if it is still this owner's. Requests go on.
    void release(Kind kind = Kind::clipboard);

    bool owns(Kind kind = Kind::clipboard);

    /// Ends the owner for good, as a crash does: its descriptors are closed, then its selections are cleared.
    void disconnect();

    /// Keeps the transfer open, and says nothing, until the owner ends or the test closes it.
    Script silence();
    Script value(std::string bytes) const;
    /// Writes each part when the reader has taken in the one before.
    Script parts(std::vector<std::string> parts) const;

    /// The types of all requests so far, the current one included.
    std::vector<std::string> requests();
    std::size_t countOf(const std::string& type);

    /// The request of that number for the type, counted from 1. Waits for it. Its transfer is null if it has
    /// been closed. Throws std::runtime_error after the time-out.
    Request awaitRequest(const std::string& type, std::size_t number = 1);

    /// Whether the program is ending. Endless scripts have to check this.
    bool isEnding();

private:
    class Source;

    struct PastRequest {
        Kind kind;
        std::string type;
        std::weak_ptr<OwnerTransfer> transfer;
    };

    void receive(Kind kind, const std::string& type, Descriptor writeEnd);
    void lose(const Source& source);
    void serve();
    Script scriptFor(const std::string& type);
    std::shared_ptr<Source>& sourceOf(Kind kind) { return sources_.at(static_cast<std::size_t>(kind)); }

    Compositor& compositor_;
    std::shared_ptr<const Descriptor> end_; // an eventfd: the owner is ending
    std::mutex mutex_;                      // not held during calls of the compositor
    std::condition_variable changed_;
    std::map<std::string, Script> scripts_;
    std::vector<std::string> offered_;
    std::array<std::shared_ptr<Source>, 2> sources_;
    std::deque<Request> waiting_;
    std::vector<PastRequest> requests_;
    std::vector<std::shared_ptr<OwnerTransfer>> silent_;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace tavel
