#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// The selections that a Wayland compositor passes on.
enum class WaylandSelectionKind : std::uint8_t { clipboard, primary };

/// The longest list of types that is taken of another program's offer. Besides its types, a program may offer
/// a few names of X11's protocol.
inline constexpr std::size_t mostOfferedTypes = 1016;

/// What a compositor tells. The functions run during `open` and `dispatch`, in the compositor's order, and do
/// not throw. Numbers of offers, sources and questions start at 1 and are never used again.
struct DataControlEvents {
    void* receiver; // the first argument of each

    /// A selection has a new content: an offer, this process's own included, or none (0). The offer before it
    /// is void. `types` has the first of the offer's types, each once, without those with names that a type
    /// cannot have (`pasteboardType::isReadableName`), and none if there is no memory for them. The first
    /// such event comes during `open`, if the compositor sends any then: it tells of the content from before.
    void (*selected)(void* receiver, WaylandSelectionKind kind, std::uint64_t offer,
                     std::vector<std::string> types);

    /// A program asks for the content of a source of ours, in that type. It reads the descriptor's other end.
    /// The descriptor is the receiver's, who closes it.
    void (*requested)(void* receiver, std::uint64_t source, std::string_view type, int descriptor);

    /// A source of ours is no selection any more. The connection has destroyed it.
    void (*cancelled)(void* receiver, std::uint64_t source);

    /// The compositor has carried out all requests that were made before this question. All events before
    /// that have been told.
    void (*answered)(void* receiver, std::uint64_t question);
};

class DataControlConnection;

/// The interface of the loadable module tavel-wayland. It speaks the protocols ext-data-control-v1 and
/// wlr-data-control-unstable-v1 with libwayland-client, which would cost every start of the agent something.
/// Plain functions instead of virtual ones, because module and program share no type information. One thread.
/// They do not throw, and none but `open` and `select` wait for the compositor. A lost connection tells
/// nothing more, and requests to it do nothing.
struct DataControlModule {
    /// Takes the connected socket over. Binds the first seat's data control, ext-data-control-v1 rather than
    /// the other, and returns when the compositor has told of the selections from before. Null if the
    /// compositor offers no data control, does not answer until the deadline, or ends; the socket is closed
    /// then, and `fault` is a constant that says of the compositor which: "does not answer".
    DataControlConnection* (*open)(int socket, std::chrono::steady_clock::time_point deadline,
                                   const DataControlEvents& events, const char*& fault);
    void (*destroy)(DataControlConnection* connection);

    /// The name of the protocol's manager, a constant: "ext_data_control_manager_v1", for instance.
    const char* (*protocol)(const DataControlConnection& connection);
    bool (*hasPrimary)(const DataControlConnection& connection);

    /// Readable when the compositor has sent something. Valid as long as the connection is not lost.
    int (*descriptor)(const DataControlConnection& connection);
    bool (*isLost)(const DataControlConnection& connection);

    /// Takes in what the compositor has sent, for a few milliseconds at most. True if there is more.
    bool (*dispatch)(DataControlConnection& connection);

    /// Sends the requests. False if the compositor takes no more of them now: `flush` is to be called again
    /// when the descriptor is writable. Meanwhile all requests fail.
    bool (*flush)(DataControlConnection& connection);

    /// Makes a source with these types, which may be none, the content of the selection. Leaves out names
    /// that cannot be sent: those that `pasteboardType::isReadableName` refuses, and those with a NUL. Gives
    /// the source's number; 0 if that fails. The names can be more than the socket holds: if so, waits up to
    /// a second in all until the compositor takes the rest. `select` with a source of before is no way to get
    /// a selection back.
    std::uint64_t (*select)(DataControlConnection& connection, WaylandSelectionKind kind,
                            const std::vector<std::string>& types);

    /// Destroys a source of ours, which gives the selection up if it still has it. Later requests for its
    /// content are closed unanswered. Nothing happens for a source that was cancelled.
    void (*withdraw)(DataControlConnection& connection, std::uint64_t source);

    /// Asks the owner of the offer to write its content, in that type, to the descriptor, which stays the
    /// caller's and can be closed at once. False if the request cannot be made: the offer is void, the
    /// compositor takes no requests, or the process has no descriptor left.
    bool (*receive)(DataControlConnection& connection, std::uint64_t offer, const std::string& type,
                    int descriptor);

    /// Asks the compositor to answer. Gives the question's number; 0 if that fails.
    std::uint64_t (*ask)(DataControlConnection& connection);
};

/// The type and name of the module's only exported function.
using DataControlModuleEntry = const DataControlModule* (*)();
inline constexpr const char* dataControlModuleEntryName = "tavelDataControlModule";

} // namespace tavel
