#pragma once

#include <xcb/xcb.h>

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace tavel {

/// A program that owns CLIPBOARD and answers each request by a script of the test, on its own thread and
/// connection. Any thread may call any operation, scripts included. Without the server or the connection, the
/// operations do nothing.
class ScriptedOwner {
public:
    struct Request {
        xcb_window_t requestor;
        xcb_atom_t selection;
        xcb_atom_t target;
        xcb_atom_t property;
        xcb_timestamp_t time;
        std::string targetName;
    };

    /// Handles a request. Runs on the owner's thread, which answers no other request until it returns.
    using Script = std::function<void(const Request&)>;

    /// Throws std::runtime_error if there is no server.
    explicit ScriptedOwner(const std::string& display);
    ~ScriptedOwner();
    ScriptedOwner(const ScriptedOwner&) = delete;
    ScriptedOwner& operator=(const ScriptedOwner&) = delete;

    /// Sets the script for a target. The owner refuses targets without a script.
    void on(const std::string& target, Script script);

    /// Sets a correct script for TARGETS.
    void offer(const std::vector<std::string>& targets);

    /// Offers one target, with this value in one property.
    void offerValue(const std::string& target, std::string bytes);

    /// Takes the selection with the server's current time, which `ownedSince` returns afterwards.
    void take();
    void release(); // sets no owner
    xcb_timestamp_t ownedSince();

    /// End the connection or the window for good, as a crash does.
    void destroyWindow();
    void disconnect();

    Script silence() const;
    Script value(const std::string& type, std::string bytes, int format = 8);
    Script atoms(const std::string& type, std::vector<xcb_atom_t> atoms);
    Script increments(const std::string& type, std::vector<std::string> parts);

    void put(const Request& request, const std::string& type, std::string_view bytes, int format = 8);
    void notify(const Request& request); // SelectionNotify: the value is in the property
    void refuse(const Request& request, std::optional<xcb_timestamp_t> time = std::nullopt);
    void announce(const Request& request, std::uint32_t hint); // writes INCR with the estimated size

    /// Writes the parts and the empty last increment, each after the deletion of the one before. False if the
    /// requestor stops deleting.
    bool sendIncrements(const Request& request, const std::string& type,
                        const std::vector<std::string>& parts);

    /// Waits until the request's property does not exist. False if the window does not exist either, or after
    /// a long time-out.
    bool awaitDeletion(const Request& request);
    bool hasProperty(const Request& request);

    /// All requests so far, the current one included.
    std::vector<Request> requests();
    std::size_t countOf(const std::string& target);

    /// The request of that number for the target, counted from 1. Waits for it. Throws std::runtime_error
    /// after the time-out.
    Request awaitRequest(const std::string& target, std::size_t number = 1);

    xcb_atom_t atom(const std::string& name);
    std::string nameOf(xcb_atom_t atom);

    xcb_connection_t* connection() { return connection_; }
    xcb_window_t window() const { return window_; }

    /// Whether the program is ending. Endless scripts have to check this.
    bool isEnding();

private:
    void serve();
    void handleRequest(const xcb_selection_request_event_t& event);
    void sendNotification(const Request& request, xcb_atom_t property, xcb_timestamp_t time);
    xcb_timestamp_t fetchTime();

    xcb_connection_t* connection_;
    xcb_window_t window_;
    xcb_atom_t clipboard_ = 0;
    xcb_atom_t timeProperty_ = 0;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Script> scripts_;
    std::vector<Request> requests_;
    xcb_timestamp_t time_ = 0; // 0: unknown
    xcb_timestamp_t ownedSince_ = 0;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace tavel
