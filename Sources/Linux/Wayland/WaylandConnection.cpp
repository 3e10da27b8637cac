#include "Linux/Wayland/WaylandConnection.h"

#include "Linux/Base/Modules.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <stdexcept>
#include <system_error>
#include <thread>

namespace tavel {

namespace {

/// How long the compositor may take to answer. It answers at once unless it is stopped.
constexpr std::chrono::seconds longestWait{3};

/// The same when the process is about to end.
constexpr std::chrono::seconds longestLastWait{1};

/// How often a compositor is asked that has no room for another connection at the moment.
constexpr std::chrono::milliseconds timeBetweenAttempts{10};

using Clock = WaylandConnection::Clock;

/// The absolute path of the compositor's socket, relative if XDG_RUNTIME_DIR does not tell.
std::filesystem::path socketOf(const std::string& display) {
    const char* const directory = std::getenv("XDG_RUNTIME_DIR"); // NOLINT(concurrency-mt-unsafe)
    return std::filesystem::path(directory == nullptr ? "" : directory) / display;
}

std::optional<sockaddr_un> addressOf(const std::filesystem::path& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (!path.is_absolute() || path.native().size() >= sizeof address.sun_path)
        return std::nullopt;
    std::memcpy(address.sun_path, path.c_str(), path.native().size());
    return address;
}

/// Without a connection, `refusal` says why.
Descriptor connectTo(const std::filesystem::path& path, Clock::time_point deadline, std::string& refusal) {
    const auto address = addressOf(path);
    if (!address) {
        refusal = path.is_absolute() ? "the path of its socket is too long: " + path.string()
                                     : "WAYLAND_DISPLAY needs XDG_RUNTIME_DIR, which is no absolute path";
        return {};
    }
    Descriptor connection(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    while (!connection ||
           connect(connection.number(), reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        if (!connection || errno != EAGAIN || Clock::now() >= deadline) {
            refusal = "no compositor answers at " + path.string() + " (" +
                      std::generic_category().message(errno) + ")";
            return {};
        }
        std::this_thread::sleep_for(timeBetweenAttempts);
    }
    return connection;
}

int millisecondsUntil(Clock::time_point deadline) {
    const auto wait = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<std::int64_t>(wait.count(), 0));
}

} // namespace

std::unique_ptr<WaylandConnection> WaylandConnection::open(const std::string& display,
                                                           const DataControlEvents& events,
                                                           const std::filesystem::path& module,
                                                           const Log& log, std::string* refusal) {
    const auto deadline = Clock::now() + longestWait;
    const std::filesystem::path path = socketOf(display);
    std::string unasked;
    std::string& why = refusal != nullptr ? *refusal : unasked;
    Descriptor socket = connectTo(path, deadline, why);
    if (!socket)
        return nullptr;
    try {
        const DataControlModule& functions =
            *reinterpret_cast<DataControlModuleEntry>(loadModuleEntry(module, dataControlModuleEntryName))();
        const char* fault = nullptr;
        DataControlConnection* const connection = functions.open(socket.release(), deadline, events, fault);
        if (connection != nullptr)
            return std::unique_ptr<WaylandConnection>(new WaylandConnection(functions, *connection));
        why = "the compositor at " + path.string() + " " + fault;
    } catch (const std::runtime_error& error) {
        why = std::string("the module for it cannot be loaded: ") + error.what();
        log(std::string("The Wayland clipboard cannot be used: ") + error.what());
    }
    return nullptr;
}

WaylandConnection::WaylandConnection(const DataControlModule& module, DataControlConnection& connection)
    : module_(module), connection_(connection), endExpected_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void WaylandConnection::expectEnd() const {
    eventfd_write(endExpected_.number(), 1);
}

void WaylandConnection::dispatch() {
    isSilent_ = isSilent_ && !waitForEvents(Clock::now());
    module_.dispatch(connection_);
}

void WaylandConnection::dispatchUntil(const std::function<bool()>& isOver) {
    const auto begin = Clock::now();
    const auto end = begin + (endIsExpected_ ? longestLastWait : longestWait);
    do {
        dispatch();
        if (isOver() || isLost())
            return;
        isSilent_ = !waitForEvents(isSilent_ ? begin : end);
    } while (!isSilent_ && Clock::now() < end);
}

/// Waits until the compositor has sent something, or takes requests again. False if it has not.
bool WaylandConnection::waitForEvents(Clock::time_point deadline) {
    for (;;) {
        const bool takesRequests = flush();
        pollfd ready[] = {{descriptor(), static_cast<short>(takesRequests ? POLLIN : POLLIN | POLLOUT), 0},
                          {endIsExpected_ ? -1 : endExpected_.number(), POLLIN, 0}};
        if (poll(ready, 2, millisecondsUntil(deadline)) < 0 && errno == EINTR)
            continue;
        if ((ready[0].revents & ~POLLOUT) != 0 || isLost())
            return true;
        if (ready[1].revents != 0) {
            endIsExpected_ = true;
            deadline = std::min<Clock::time_point>(deadline, Clock::now() + longestLastWait);
        }
        if (Clock::now() >= deadline)
            return false;
    }
}

} // namespace tavel
