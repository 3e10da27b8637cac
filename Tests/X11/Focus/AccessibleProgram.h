#pragma once

#include "Tests/X11/Focus/AccessibilityBus.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tavel {

/// A program on the accessibility bus with elements that the test defines. Belongs to the test's process, but
/// answers on its own thread, whatever the test's threads do.
class AccessibleProgram {
public:
    struct Element {
        std::uint32_t role = 0;
        std::vector<unsigned int> states;
        std::vector<std::string> children; // their paths
    };

    explicit AccessibleProgram(const TestAccessibilityBus& bus);
    ~AccessibleProgram() { vanish(); }
    AccessibleProgram(const AccessibleProgram&) = delete;
    AccessibleProgram& operator=(const AccessibleProgram&) = delete;

    /// The unique name of its connection.
    const std::string& name() const { return name_; }

    void set(const std::string& path, const Element& element);

    /// Announces itself to the registry, with that element as its root.
    void announce(const std::string& path);

    /// What the program answers if it is asked for all that is focused; it has no such interface before.
    void setMatches(const std::vector<std::string>& paths);

    /// Which elements the program lists for others to cache, in the order of their paths; it has no such
    /// interface before.
    void setCached(const std::vector<std::string>& paths);

    /// Tells that the element has gained or lost the focus.
    void gain(const std::string& path) { tellFocus(path, 1); }
    void lose(const std::string& path) { tellFocus(path, 0); }

    /// Tells that a window has become active.
    void activate(const std::string& path);

    /// Sends a signal about the focus with that body.
    void tell(const std::string& path, GVariant* body);

    /// `hook` runs before each answer to a question for a role; no answer is sent when it gives false.
    void beforeRole(std::function<bool(const std::string& path)> hook);

    /// Answers nothing at all any more, or again.
    void setSilent(bool silent);

    /// Answers nothing until it is not busy any more, but then all that it has been asked meanwhile.
    void setBusy(bool busy);

    /// How often it has been asked for a role.
    int roleQuestions();

    /// Closes the connection.
    void vanish();

private:
    static GDBusMessage* filter(GDBusConnection* connection, GDBusMessage* message, gboolean incoming,
                                gpointer self);
    bool takeOn(GDBusMessage* call);
    bool answer(GDBusMessage* call);
    GVariant* answerTo(const std::string& method, const std::string& path);
    GVariant* listOf(const std::vector<std::string>& paths) const;
    GVariant* cachedItems() const;
    void tellFocus(const std::string& path, int hasFocus);
    void emit(const std::string& path, const char* interface, const char* member, GVariant* body);

    GioPointer<GDBusConnection> connection_;
    std::string name_;
    guint filter_ = 0;
    std::mutex mutex_;
    std::map<std::string, Element> elements_;
    std::vector<std::string> matches_;
    bool hasMatches_ = false;
    std::vector<std::string> cached_;
    std::function<bool(const std::string&)> beforeRole_;
    int roleQuestions_ = 0;
    bool isSilent_ = false;
    bool isBusy_ = false;
    std::vector<std::shared_ptr<GDBusMessage>> heldCalls_; // while busy
};

} // namespace tavel
