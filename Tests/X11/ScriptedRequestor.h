#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A program that asks for CLIPBOARD's content, step by step as the test says, into a property of a window of
/// its own. Used by one thread. Waiting ends after a long time, with nothing.
class ScriptedRequestor {
public:
    static inline const std::string usualProperty = "REQUESTED";

    struct Property {
        std::string type; // empty: there is no property
        int format = 0;
        std::string bytes;

        bool exists() const { return !type.empty(); }
        std::vector<std::uint32_t> numbers() const; // of format 32
    };

    /// An answer as it came.
    struct Answer {
        xcb_window_t requestor;
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_atom_t property; // None: refused
        xcb_timestamp_t time;
    };

    /// Throws std::runtime_error if there is no server.
    explicit ScriptedRequestor(const std::string& display);
    ~ScriptedRequestor();
    ScriptedRequestor(const ScriptedRequestor&) = delete;
    ScriptedRequestor& operator=(const ScriptedRequestor&) = delete;

    /// Asks. `convert` also waits for the answer, and tells whether it was no refusal.
    void ask(const std::string& target, const std::string& property = usualProperty,
             xcb_timestamp_t time = XCB_CURRENT_TIME);
    void askWithoutProperty(const std::string& target);
    void askInNameOf(xcb_window_t window, const std::string& target, const std::string& property);
    std::optional<Answer> awaitAnswer();
    bool convert(const std::string& target, const std::string& property = usualProperty,
                 xcb_timestamp_t time = XCB_CURRENT_TIME);

    /// Asks, and reads what there is, in one property or in increments. Nothing if refused.
    std::optional<Property> read(const std::string& target);

    /// The rest of a transfer whose announcement has been read and deleted.
    std::optional<Property> readIncrements(const std::string& property = usualProperty);

    Property property(const std::string& name = usualProperty);
    Property takeProperty(const std::string& name = usualProperty); // and deletes it
    void deleteProperty(const std::string& name = usualProperty);
    void setAtoms(const std::string& name, const std::string& type, const std::vector<xcb_atom_t>& atoms);
    void setBytes(const std::string& name, const std::string& type, std::string_view bytes);

    /// Waits until the property exists.
    bool awaitProperty(const std::string& name = usualProperty);

    /// The server's time, one that no event before has had and every later one has or is after.
    xcb_timestamp_t fetchTime();

    void destroyWindow();
    void disconnect();

    xcb_atom_t atom(const std::string& name);
    std::string nameOf(xcb_atom_t atom);
    std::vector<std::string> namesOf(const std::vector<xcb_atom_t>& atoms);
    xcb_window_t window() const { return window_; }
    xcb_window_t ownerOfClipboard();
    xcb_connection_t* connection() { return connection_; }

    /// How many errors have come that belong to no request with an answer.
    int errorCount() const { return errors_; }

private:
    template <typename IsWanted>
    bool awaitEvent(const IsWanted& isWanted);
    Property get(const std::string& name, bool deletes);

    xcb_connection_t* connection_;
    xcb_window_t window_;
    int errors_ = 0;
};

} // namespace tavel
