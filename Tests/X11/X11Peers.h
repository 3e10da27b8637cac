#pragma once

#include "Tests/Support/XServer.h"
#include "Tests/X11/PasteboardProgram.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tavel {

/// For tests that await a time-out: an owner is soon too silent.
TransferTimeOuts shortOwnerTimeOut();

/// For tests in which no time-out may be what ends the waiting: every limit is far away.
TransferTimeOuts longTimeOuts();

/// What must be far from any limit of `longTimeOuts`, and is plenty for everything that happens at once.
inline constexpr std::chrono::seconds atOnce{15};

/// An X server with our program on it, which the test's other clients deal with.
class X11Peers {
public:
    explicit X11Peers(const TransferTimeOuts& timeOuts);

    XServer& server() { return server_; }
    PasteboardProgram& program() { return program_; }
    Pasteboard& board() { return *board_; }
    const std::string& display() const { return server_.display(); }

    /// The program's read of the plain text, or of a type's data.
    std::optional<std::string> text();
    std::optional<std::string> data(std::string_view type);

    /// The program clears, and writes this.
    void write(std::string_view type, std::string_view data);

    /// Returns when the program has taken in everything that happened before, and when what it did upon it
    /// has happened too.
    void settle();

    bool isServing();

private:
    XServer server_;
    PasteboardProgram program_;
    std::shared_ptr<Pasteboard> board_;
};

/// That many bytes in which no two longer stretches are the same, nor a byte zero: whatever is lost, doubled
/// or exchanged shows. Other seeds give other bytes. All ASCII.
std::string distinctBytes(std::size_t size, unsigned int seed = 1);

/// Runs the operation and gives how long it took.
template <typename Operation>
std::chrono::steady_clock::duration durationOf(const Operation& operation) {
    const auto begin = std::chrono::steady_clock::now();
    operation();
    return std::chrono::steady_clock::now() - begin;
}

} // namespace tavel
