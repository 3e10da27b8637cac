#pragma once

#include "Linux/X11/Keyboard/KeyGrabs.h"
#include "Linux/X11/Keyboard/KeyModifiers.h"
#include "Linux/X11/Keyboard/KeyboardMap.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

/// The keys that are held, by their holders. For programs a key goes down with the first press and up with
/// the first release, whoever makes them.
struct HeldKeys {
    KeySet byUser; // on the keyboards
    KeySet byTest; // by programs with XTEST, this one included
};

/// A connection to an X server for its keyboard. Several threads may use it at once. A thread that waits for
/// a reply can read events along with it, for which the descriptor then no longer becomes readable.
///
/// When the server is lost, `isLost` becomes true and every operation returns an empty result at once.
class KeyboardConnection {
public:
    /// Connects to the server that `display` names, or to that of DISPLAY if it is null. Returns null if no
    /// server answers or it lacks the extension XKB, XTEST or XInput 2.1; `refusal` says which then.
    static std::unique_ptr<KeyboardConnection> open(const char* display, std::string& refusal);

    ~KeyboardConnection();
    KeyboardConnection(const KeyboardConnection&) = delete;
    KeyboardConnection& operator=(const KeyboardConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return root_; }
    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }
    int descriptor() const { return xcb_get_file_descriptor(connection_); }

    /// Selects or deselects the events about the keyboard's map and the root window's properties.
    void selectChanges(bool on);

    /// Whether the event reports a possible change of the keyboard's map. One change causes several events.
    bool isKeyboardChange(const xcb_generic_event_t& event) const;

    /// Selects or deselects the events about releases of keys, whatever grabs and windows there are.
    void selectReleases(bool on);

    /// Whether the event reports the release of that key.
    bool isReleaseOf(xcb_keycode_t key, const xcb_generic_event_t& event) const;

    /// The current map and the current group (layout). One round trip each.
    KeyboardMap readMap();
    std::uint8_t readGroup();

    /// The keys that are down for programs. One round trip.
    KeySet keysDown();

    /// The keys that set modifiers other than Caps Lock and Num Lock. One round trip.
    KeySet modifierKeys(const KeyboardMap& map);

    /// Who holds which keys. Three round trips.
    HeldKeys heldKeys();

    /// Control with V in any group of the map and with any state of the locks. A grab cannot tell the groups
    /// apart. One round trip.
    KeyCombinations pasteCombinations(const KeyboardMap& map);

private:
    KeyboardConnection(xcb_connection_t* connection, xcb_window_t root, std::uint8_t xkbEvent);

    std::vector<std::uint8_t> readModifierMapping();

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::uint8_t xkbEvent_;
};

} // namespace tavel
