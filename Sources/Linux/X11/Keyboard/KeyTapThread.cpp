#include "Linux/X11/Keyboard/KeyTapThread.h"

#include "Linux/X11/Keyboard/KeyModifiers.h"
#include "Linux/X11/Keyboard/PostedKeys.h"
#include "Linux/X11/X11Reply.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>
#include <xcb/xcbext.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <new>
#include <system_error>
#include <utility>

namespace tavel {

namespace {

int openWakeUp() {
    const int descriptor = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (descriptor < 0)
        throw std::system_error(errno, std::generic_category(), "eventfd");
    return descriptor;
}

/// Blocks all signals in this thread while it exists. A thread that is started meanwhile inherits this.
class NoSignals {
public:
    NoSignals() {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &before_);
    }
    ~NoSignals() { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }
    NoSignals(const NoSignals&) = delete;
    NoSignals& operator=(const NoSignals&) = delete;

private:
    sigset_t before_{};
};

KeyEvent keyEvent(KeyEventType type, std::uint16_t modifiers) {
    return {type, keyCode::v, keyFlagsOf(modifiers), 0};
}

/// A held key repeats without releases in between (KeyboardConnection), so a press before its release is one.
KeyEvent repeatEvent(std::uint16_t modifiers) {
    KeyEvent event = keyEvent(KeyEventType::keyDown, modifiers);
    event.isRepeat = true;
    return event;
}

/// Waits as long as xcb does, which keeps the events meanwhile: this thread has to handle them in order.
void* waitForReply(xcb_connection_t* connection, std::uint32_t requestNumber) {
    xcb_generic_error_t* error = nullptr;
    void* const reply = xcb_wait_for_reply(connection, requestNumber, &error);
    std::free(error);
    return reply;
}

template <typename Event>
const Event& as(const xcb_generic_event_t& event) {
    return reinterpret_cast<const Event&>(event);
}

} // namespace

KeyTapThread::KeyTapThread(KeyboardConnection& connection, std::chrono::milliseconds decisionTime,
                           Listener listener)
    : connection_(connection), decisionTime_(decisionTime), listener_(std::move(listener)),
      grabs_(connection.get()), wakeUp_(openWakeUp()),
      activeWindow_(connection.get(), connection.root(),
                    [connection = connection.get()](std::uint32_t number) {
                        return waitForReply(connection, number);
                    }) {
    try {
        start();
    } catch (...) {
        close(wakeUp_);
        throw;
    }
}

void KeyTapThread::start() {
    const NoSignals noSignals;
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), "keyboard-tap");
}

KeyTapThread::~KeyTapThread() {
    {
        const std::lock_guard lock(mutex_);
        stopping_ = true;
        if (pending_ != nullptr)
            pending_->giveUp();
    }
    wake();
    thread_.join();
    close(wakeUp_);
}

void KeyTapThread::setEnabled(bool enabled) {
    connection_.selectChanges(enabled);
    grabs_.setEnabled(enabled);
    if (enabled)
        mustRefresh_ = true;
    wake();
}

void KeyTapThread::wake() const {
    eventfd_write(wakeUp_, 1);
}

void KeyTapThread::run() {
    while (runOnePass()) {
    }
}

/// False at the end of the thread. Without memory for a pass, tries again.
bool KeyTapThread::runOnePass() {
    try {
        return handleNews();
    } catch (const std::bad_alloc&) {
        mustRefresh_ = true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        return true;
    }
}

bool KeyTapThread::isStopping() {
    const std::lock_guard lock(mutex_);
    return stopping_;
}

bool KeyTapThread::handleNews() {
    handleEvents();
    if (connection_.isLost())
        return false;
    if (isStopping()) {
        letGo();
        return false;
    }
    // A refresh waits for replies. The events that come with them do not make the descriptor readable, so
    // the loop handles them before it waits.
    if (mustRefresh_ || keyboardChanged_ || windowChanged_)
        refresh();
    else
        waitForNews();
    return true;
}

void KeyTapThread::waitForNews() const {
    xcb_flush(connection_.get());
    std::array<pollfd, 2> descriptors{pollfd{connection_.descriptor(), POLLIN, 0},
                                      pollfd{wakeUp_, POLLIN, 0}};
    poll(descriptors.data(), descriptors.size(), -1);
    eventfd_t count = 0;
    eventfd_read(wakeUp_, &count);
}

void KeyTapThread::handleEvents() {
    using Event = X11Reply<xcb_generic_event_t>;
    for (Event event(xcb_poll_for_event(connection_.get())); event != nullptr;
         event.reset(xcb_poll_for_event(connection_.get())))
        handle(*event);
}

/// Ignores events from SendEvent, which have another response_type, and errors: a window may be destroyed at
/// any time, or another program may hold a grab.
void KeyTapThread::handle(const xcb_generic_event_t& event) {
    switch (event.response_type) {
    case XCB_KEY_PRESS:
        pressed(as<xcb_key_press_event_t>(event));
        break;
    case XCB_PROPERTY_NOTIFY:
        if (as<xcb_property_notify_event_t>(event).atom == activeWindow_.property())
            windowChanged_ = true;
        break;
    default:
        if (connection_.isKeyboardChange(event))
            keyboardChanged_ = true;
        else if (held_ && connection_.isReleaseOf(held_->code, event))
            endHold();
    }
}

void KeyTapThread::refresh() {
    const bool everything = mustRefresh_.exchange(false);
    if (std::exchange(keyboardChanged_, false) || everything)
        readKeyboard();
    windowChanged_ = false;
    const std::optional<ProgramWindow> active = activeWindow_.read();
    const bool isFileManager = active && isFileManagerClass(active->className);
    const xcb_window_t none = XCB_WINDOW_NONE;
    grabs_.grab(isFileManager ? active->window : none, combinations_);
}

void KeyTapThread::readKeyboard() {
    map_ = connection_.readMap();
    combinations_ = connection_.pasteCombinations(map_);
}

/// Releases the grabs and handles the presses that are already on their way. The second round trip makes sure
/// that the server has carried out every request before the connection is closed.
void KeyTapThread::letGo() {
    grabs_.setEnabled(false);
    synchronize();
    handleEvents();
    synchronize();
}

void KeyTapThread::synchronize() const {
    awaitReply(connection_.get(), xcb_get_input_focus(connection_.get()), xcb_get_input_focus_reply);
}

void KeyTapThread::pressed(const xcb_key_press_event_t& key) {
    if (held_ && key.detail == held_->code) {
        held_->modifiers = key.state;
        swallow(key);
        listener_.report(repeatEvent(key.state));
    } else if (askOrPass(key) == KeyVerdict::pass) {
        replay(key);
    } else {
        hold(key);
    }
}

/// Without the memory to ask, the key passes: the keyboard is frozen until it is told.
KeyVerdict KeyTapThread::askOrPass(const xcb_key_press_event_t& key) {
    try {
        return askFor(key);
    } catch (const std::bad_alloc&) {
        const std::lock_guard lock(mutex_);
        pending_.reset();
        return KeyVerdict::pass;
    }
}

KeyVerdict KeyTapThread::askFor(const xcb_key_press_event_t& key) {
    // Only the test in canGrab grabs on the root window. Other modifiers are grabbed while a key is held, and
    // still for a moment afterwards.
    if (key.event == connection_.root() || !grabs_.isEnabled() || keyFlagsOf(key.state) != keyFlag::command)
        return KeyVerdict::pass;
    // The key is grabbed in every group, and gives V in some only. The event of a grab does not tell the
    // group, which cannot change while the keyboard is frozen.
    if (!isPasteKey(map_, key.detail, connection_.readGroup()))
        return KeyVerdict::pass;
    const auto decision = std::make_shared<KeyDecision>(KeyDecision::Clock::now() + decisionTime_);
    {
        const std::lock_guard lock(mutex_);
        if (stopping_)
            return KeyVerdict::pass;
        pending_ = decision;
    }
    listener_.decide(decision, keyEvent(KeyEventType::keyDown, key.state));
    const KeyVerdict verdict = decision->await();
    const std::lock_guard lock(mutex_);
    pending_.reset();
    return verdict;
}

void KeyTapThread::replay(const xcb_key_press_event_t& key) {
    xcb_allow_events(connection_.get(), XCB_ALLOW_REPLAY_KEYBOARD, key.time);
    xcb_flush(connection_.get());
}

/// The time keeps a later press, which has a grab of its own, from being swallowed along.
void KeyTapThread::swallow(const xcb_key_press_event_t& key) {
    xcb_ungrab_keyboard(connection_.get(), key.time);
    xcb_flush(connection_.get());
}

/// Swallows the press, and its repeats until its release.
void KeyTapThread::hold(const xcb_key_press_event_t& key) {
    held_ = HeldKey{key.detail, key.state};
    grabs_.hold(key.event, key.detail);
    connection_.selectReleases(true);
    swallow(key);
    // A release that the server saw while the keyboard was frozen may not be reported any more.
    if (!connection_.keysDown()[key.detail])
        endHold();
}

void KeyTapThread::endHold() {
    const std::uint16_t modifiers = held_->modifiers;
    held_.reset();
    connection_.selectReleases(false);
    grabs_.endHold();
    listener_.report(keyEvent(KeyEventType::keyUp, modifiers));
}

} // namespace tavel
