#include "Linux/X11/Keyboard/X11KeyboardTap.h"

#include "Linux/X11/Keyboard/PostedKeys.h"
#include "Linux/X11/Keyboard/Xwayland.h"
#include "Linux/X11/X11Reply.h"

#include <algorithm>
#include <cstddef>
#include <system_error>
#include <utility>
#include <vector>

namespace tavel {

/// The main thread's part: calls the handler for the presses that the tap's thread posts.
class X11KeyboardTap::Decider {
public:
    Decider(Handler handler, DecisionDeadline& deadline)
        : handler_(std::move(handler)), deadline_(deadline) {}

    void setEnabled(bool enabled) { enabled_ = enabled; }

    void decide(KeyDecision& decision, const KeyEvent& event) {
        if (!decision.claim())
            return;
        const KeyVerdict verdict = enabled_ ? verdictOn(event, decision.deadline()) : KeyVerdict::pass;
        if (!decision.answer(verdict) && verdict == KeyVerdict::swallow)
            handler_(KeyEvent{KeyEventType::tapDisabledByTimeout});
    }

    /// An event that needs no decision.
    void report(const KeyEvent& event) { handler_(event); }

private:
    KeyVerdict verdictOn(const KeyEvent& event, KeyDecision::Clock::time_point end) {
        const DecisionDeadline::Scope scope(deadline_, end);
        return handler_(event);
    }

    Handler handler_;
    DecisionDeadline& deadline_;
    bool enabled_ = true;
};

X11KeyboardTap::X11KeyboardTap(const char* display, EventLoop& loop, DecisionDeadline& deadline,
                               std::chrono::milliseconds decisionTime)
    : display_(display != nullptr ? std::optional<std::string>(display) : std::nullopt), loop_(loop),
      deadline_(deadline), decisionTime_(decisionTime) {}

X11KeyboardTap::~X11KeyboardTap() {
    X11KeyboardTap::remove();
}

bool X11KeyboardTap::create(Handler handler) {
    auto connection = KeyboardConnection::open(display_ ? display_->c_str() : nullptr, refusal_);
    if (connection == nullptr)
        return false;
    // Xwayland would not see the keys of native programs: a tap of some windows is none.
    if (isXwayland(connection->get(), connection->root())) {
        refusal_ = "the X server is Xwayland, which does not see the keys of native Wayland programs";
        return false;
    }
    if (!canGrab(connection->get(), connection->root(),
                 connection->pasteCombinations(connection->readMap()))) {
        refusal_ = "another program has grabbed Ctrl+V for the whole screen";
        return false;
    }
    decider_ = std::make_shared<Decider>(std::move(handler), deadline_);
    try {
        thread_ = std::make_unique<KeyTapThread>(*connection, decisionTime_, listener());
    } catch (const std::system_error&) {
        refusal_ = "the system has no further thread";
        return false;
    }
    refusal_.clear();
    connection_ = std::move(connection);
    thread_->setEnabled(true);
    return true;
}

KeyTapThread::Listener X11KeyboardTap::listener() {
    // Weak references, so that neither the thread nor the loop destroys the handler.
    const std::weak_ptr<Decider> weakDecider = decider_;
    return {
        [weakDecider, &loop = loop_](const std::shared_ptr<KeyDecision>& decision, const KeyEvent& event) {
            loop.post([weakDecider, decision, event] {
                if (const auto decider = weakDecider.lock())
                    decider->decide(*decision, event);
            });
        },
        [weakDecider, &loop = loop_](const KeyEvent& event) {
            loop.post([weakDecider, event] {
                if (const auto decider = weakDecider.lock())
                    decider->report(event);
            });
        },
    };
}

void X11KeyboardTap::remove() {
    decider_.reset();
    thread_.reset();
    connection_.reset();
    restored_.reset();
}

void X11KeyboardTap::setEnabled(bool enabled) {
    if (thread_ == nullptr)
        return;
    decider_->setEnabled(enabled);
    thread_->setEnabled(enabled);
}

bool X11KeyboardTap::isKeyDown(std::int64_t keyCode) {
    if (connection_ == nullptr)
        return false;
    const std::vector<xcb_keycode_t> codes = codesOf(connection_->readMap(), keyCode);
    const KeySet down = connection_->keysDown();
    thread_->wake();
    return std::ranges::any_of(codes, [&](xcb_keycode_t code) { return down[code]; });
}

void X11KeyboardTap::post(std::span<const KeyEvent> events) {
    if (connection_ == nullptr)
        return;
    const KeyboardMap map = connection_->readMap();
    const std::vector<PostedKey> keys = postedKeys(events, map, connection_->readGroup());
    const KeySet modifierKeys = connection_->modifierKeys(map);
    const KeySet heldByPrograms = connection_->heldKeys().byTest & ~restored_;
    const KeySet down = connection_->keysDown();
    thread_->grabs().sendUngrabbed(
        [&] { sendKeys(connection_->get(), typedAlone(keys, down, down & modifierKeys)); });
    restored_ |= down & modifierKeys & ~heldByPrograms;
    releaseRestored();
    thread_->wake();
}

/// Releases the restored keys that the user has let go meanwhile: nobody else would release them. What the
/// user lets go from now on is up for programs, although XTEST still has it down.
void X11KeyboardTap::releaseRestored() {
    if (restored_.none())
        return;
    const KeySet released = restored_ & ~connection_->heldKeys().byUser;
    sendKeys(connection_->get(), eachOf(released, false));
    restored_ &= ~released;
    xcb_flush(connection_->get());
}

} // namespace tavel
