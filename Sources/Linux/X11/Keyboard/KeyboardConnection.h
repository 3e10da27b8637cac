#pragma once

#include "Linux/X11/Keyboard/KeyGrabs.h"
#include "Linux/X11/Keyboard/KeyboardMap.h"

#include <xcb/xcb.h>

#include <cstdint>
#include <memory>

namespace tavel {

/// A connection to an X server for its keyboard. It can be used by several threads at once; but what one of
/// them waits for can bring events, of which the descriptor then tells nobody.
///
/// When the server goes, every operation goes on giving nothing: `isLost` tells.
class KeyboardConnection {
public:
    /// Connects to the server that `display` names, or DISPLAY if it is null. Nothing if none answers there,
    /// or one without the extensions XKB and XTEST.
    static std::unique_ptr<KeyboardConnection> open(const char* display);

    ~KeyboardConnection();
    KeyboardConnection(const KeyboardConnection&) = delete;
    KeyboardConnection& operator=(const KeyboardConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return root_; }
    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }
    int descriptor() const { return xcb_get_file_descriptor(connection_); }

    /// Begins or ends the events that tell of changes of the keyboard's map and of the root window's
    /// properties.
    void selectChanges(bool on);

    /// Whether the event tells that the keyboard's map may have changed. One change gives several.
    bool isKeyboardChange(const xcb_generic_event_t& event) const;

    /// As the keyboard is now. One round trip each; `pasteCombinations` two.
    KeyboardMap readMap();
    std::uint8_t readGroup();

    /// Control with V in any group, whatever the locks are.
    KeyCombinations pasteCombinations();

private:
    KeyboardConnection(xcb_connection_t* connection, xcb_window_t root, std::uint8_t xkbEvent);

    xcb_connection_t* connection_;
    xcb_window_t root_;
    std::uint8_t xkbEvent_;
};

} // namespace tavel
