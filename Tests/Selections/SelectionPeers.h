#pragma once

#include "Linux/Selections/TransferTimeOuts.h"
#include "Tests/Selections/OwnerPeer.h"
#include "Tests/Selections/PasteboardProgram.h"
#include "Tests/Selections/ReaderPeer.h"

#include <chrono>
#include <cstddef>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace tavel {

/// For tests that wait for the time-out of an inactive owner.
TransferTimeOuts shortOwnerTimeOut();

/// For tests in which no time-out may end a wait.
TransferTimeOuts longTimeOuts();

/// Far below every limit of `longTimeOuts`, and enough for anything that needs no time-out.
inline constexpr std::chrono::seconds atOnce{15};

/// The name of the pasteboard that is another selection than the general one, on every display server.
inline constexpr auto otherSelection = "PRIMARY";

/// A display server of the test's own, with the tested program on it. The test's other programs are its
/// peers, and must end before.
class SelectionPeers {
public:
    virtual ~SelectionPeers() = default;

    virtual PasteboardProgram& program() = 0;

    /// The program's general pasteboard.
    virtual Pasteboard& board() = 0;

    virtual std::unique_ptr<OwnerPeer> makeOwner() = 0;
    virtual std::unique_ptr<ReaderPeer> makeReader() = 0;

    /// Another program like the tested one, with the same time-outs.
    virtual std::unique_ptr<PasteboardProgram> makeProgram() = 0;

    /// Takes the server from all programs without a word. Any thread.
    virtual void stopServer() = 0;

    /// Whether a value that breaks off, as its owner has died, can be told from one that has come to its end.
    virtual bool tellsBreaksFromEnds() const = 0;

    /// The plain text, or the data of a type, as the program reads it.
    std::optional<std::string> text();
    std::optional<std::string> data(std::string_view type);

    /// Clears the program's pasteboard and writes this.
    void write(std::string_view type, std::string_view data);

    /// Returns when the program has handled all earlier events, and the server has carried out its requests.
    void settle();

    bool isServing();
};

/// Makes a display server for each test.
struct SelectionPeersMaker {
    const char* label; // letters and digits, for the tests' output
    std::unique_ptr<SelectionPeers> (*make)(const TransferTimeOuts& timeOuts);
};

inline void PrintTo(const SelectionPeersMaker& maker, std::ostream* out) {
    *out << maker.label;
}

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
