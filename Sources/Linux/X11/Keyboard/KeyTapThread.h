#pragma once

#include "Linux/X11/ActiveWindow.h"
#include "Linux/X11/Keyboard/KeyDecision.h"
#include "Linux/X11/Keyboard/KeyGrabs.h"
#include "Linux/X11/Keyboard/KeyboardConnection.h"
#include "Platform/KeyboardTap.h"

#include <xcb/xcb.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

namespace tavel {

/// The thread that grabs Control+V on the active window if that belongs to a file manager. The keyboard is
/// frozen after each press until this thread answers the server, at most a tenth of a second whatever other
/// threads do. Ends when the server is lost.
///
/// A swallowed press ends its grab at once, because an active grab would take all other keys as well. Until
/// the key's release, which XInput reports, presses of this key on the window are its repeats: they come here
/// with any modifiers, as the user may release Control first, and are swallowed in the same way. The keyboard
/// is frozen between such a press and the end of its grab, so other keys wait and none is lost. Only the
/// release reaches the window, which toolkits ignore without its press, as after every grab.
class KeyTapThread {
public:
    /// Called on this thread. The functions must not block.
    struct Listener {
        /// A press to decide about. The decision may be given up before it is claimed.
        std::function<void(const std::shared_ptr<KeyDecision>&, const KeyEvent&)> decide;

        /// A repeat or the release of a key that was swallowed.
        std::function<void(const KeyEvent&)> report;
    };

    /// Starts the thread, switched off. `decisionTime` is the time-out of a decision. Throws
    /// std::system_error when the system has no thread or descriptor left.
    KeyTapThread(KeyboardConnection& connection, std::chrono::milliseconds decisionTime, Listener listener);

    /// Ends the thread. No listener is called any more, and pending presses pass.
    ~KeyTapThread();
    KeyTapThread(const KeyTapThread&) = delete;
    KeyTapThread& operator=(const KeyTapThread&) = delete;

    /// Main thread. Switching on reads the layout and the active window again.
    void setEnabled(bool enabled);

    KeyGrabs& grabs() { return grabs_; }

    /// Another thread has to call this after it has waited for a reply on the connection, which may have
    /// brought events along. Any thread.
    void wake() const;

private:
    /// A swallowed key before its release.
    struct HeldKey {
        xcb_keycode_t code = 0;
        std::uint16_t modifiers = 0; // of its latest press
    };

    void start();
    void run();
    bool runOnePass();
    bool isStopping();
    bool handleNews();
    void waitForNews() const;
    void handleEvents();
    void handle(const xcb_generic_event_t& event);
    void refresh();
    void readKeyboard();
    void letGo();
    void synchronize() const;

    void pressed(const xcb_key_press_event_t& key);
    KeyVerdict askOrPass(const xcb_key_press_event_t& key);
    KeyVerdict askFor(const xcb_key_press_event_t& key);
    void replay(const xcb_key_press_event_t& key);
    void swallow(const xcb_key_press_event_t& key);
    void hold(const xcb_key_press_event_t& key);
    void endHold();

    KeyboardConnection& connection_;
    const std::chrono::milliseconds decisionTime_;
    const Listener listener_;
    KeyGrabs grabs_;
    const int wakeUp_;
    std::atomic<bool> mustRefresh_ = false;

    std::mutex mutex_;
    bool stopping_ = false;
    std::shared_ptr<KeyDecision> pending_;

    // Used by this thread only:
    ActiveWindow activeWindow_;
    KeyboardMap map_;
    KeyCombinations combinations_;
    bool keyboardChanged_ = false;
    bool windowChanged_ = false;
    std::optional<HeldKey> held_;

    std::thread thread_;
};

} // namespace tavel
