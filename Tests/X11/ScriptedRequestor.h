#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {

/// A program that requests the content of CLIPBOARD step by step, into properties of its own window. One
/// thread. Waits end after a long time-out with an empty result.
class ScriptedRequestor {
public:
    static inline const std::string usualProperty = "REQUESTED";

    struct Property {
        std::string type; // empty: the property does not exist
        int format = 0;
        std::string bytes;

        bool exists() const { return !type.empty(); }
        std::vector<std::uint32_t> numbers() const; // for format 32
    };

    /// A SelectionNotify event.
    struct Answer {
        xcb_window_t requestor;
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_atom_t property; // None for a refusal
        xcb_timestamp_t time;
    };

    /// Throws std::runtime_error if there is no server.
    explicit ScriptedRequestor(const std::string& display);
    ~ScriptedRequestor();
    ScriptedRequestor(const ScriptedRequestor&) = delete;
    ScriptedRequestor& operator=(const ScriptedRequestor&) = delete;

    /// Request a conversion. `convert` also waits for the answer; false if that is a refusal.
    void ask(const std::string& target, const std::string& property = usualProperty,
             xcb_timestamp_t time = XCB_CURRENT_TIME);
    void askWithoutProperty(const std::string& target);
    void askInNameOf(xcb_window_t window, const std::string& target, const std::string& property);
    std::optional<Answer> awaitAnswer();
    bool convert(const std::string& target, const std::string& property = usualProperty,
                 xcb_timestamp_t time = XCB_CURRENT_TIME);

    /// Requests a value and reads it, in one property or in increments. nullopt on refusal.
    std::optional<Property> read(const std::string& target);

    /// Reads the increments of a transfer after its announcement has been read and deleted.
    std::optional<Property> readIncrements(const std::string& property = usualProperty);

    Property property(const std::string& name = usualProperty);
    Property takeProperty(const std::string& name = usualProperty); // reads and deletes it
    void deleteProperty(const std::string& name = usualProperty);
    void setAtoms(const std::string& name, const std::string& type, const std::vector<xcb_atom_t>& atoms);
    void setBytes(const std::string& name, const std::string& type, std::string_view bytes);

    /// Waits until the property exists.
    bool awaitProperty(const std::string& name = usualProperty);

    /// The server's time: later than that of all earlier events, and not later than that of any later event.
    xcb_timestamp_t fetchTime();

    void destroyWindow();
    void disconnect();

    xcb_atom_t atom(const std::string& name);
    std::string nameOf(xcb_atom_t atom);
    std::vector<std::string> namesOf(const std::vector<xcb_atom_t>& atoms);
    xcb_window_t window() const { return window_; }
    xcb_window_t ownerOfClipboard();
    xcb_connection_t* connection() { return connection_; }

    /// The number of errors of requests without a reply.
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
