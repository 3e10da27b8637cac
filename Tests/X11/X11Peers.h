#pragma once

#include "Tests/Support/XServer.h"
#include "Tests/X11/X11Program.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// For tests that wait for the time-out of an inactive owner.
TransferTimeOuts shortOwnerTimeOut();

/// For tests in which no time-out may end a wait.
TransferTimeOuts longTimeOuts();

/// Far below every limit of `longTimeOuts`, and enough for anything that needs no time-out.
inline constexpr std::chrono::seconds atOnce{15};

/// An X server with the tested program on it. The test's other clients are its peers.
class X11Peers {
public:
    explicit X11Peers(const TransferTimeOuts& timeOuts);

    XServer& server() { return server_; }
    X11Program& program() { return program_; }
    Pasteboard& board() { return *board_; }
    const std::string& display() const { return server_.display(); }

    /// The plain text, or the data of a type, as the program reads it.
    std::optional<std::string> text();
    std::optional<std::string> data(std::string_view type);

    /// Clears the program's pasteboard and writes this.
    void write(std::string_view type, std::string_view data);

    /// Returns when the program has handled all earlier events, and the server has carried out its requests.
    void settle();

    bool isServing();

private:
    XServer server_;
    X11Program program_;
    std::shared_ptr<Pasteboard> board_;
};

/// ASCII bytes without repeated longer parts and without zeros, so that lost, doubled and exchanged parts
/// show. Different seeds give different bytes.
std::string distinctBytes(std::size_t size, unsigned int seed = 1);

/// Runs the operation and returns its duration.
template <typename Operation>
std::chrono::steady_clock::duration durationOf(const Operation& operation) {
    const auto begin = std::chrono::steady_clock::now();
    operation();
    return std::chrono::steady_clock::now() - begin;
}

} // namespace tavel
