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

/// A program that owns CLIPBOARD and answers each request as the test says, with a thread and a connection of
/// its own. All operations may be used on any thread, within scripts too. When the server or this program's
/// connection has gone, they do nothing.
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

    /// What to do with a request. Runs on the owner's thread, and may take its time: no other request is
    /// answered meanwhile.
    using Script = std::function<void(const Request&)>;

    /// Throws std::runtime_error if there is no server.
    explicit ScriptedOwner(const std::string& display);
    ~ScriptedOwner();
    ScriptedOwner(const ScriptedOwner&) = delete;
    ScriptedOwner& operator=(const ScriptedOwner&) = delete;

    /// How the owner answers from now on. What it has no script for it refuses.
    void on(const std::string& target, Script script);

    /// Answers for TARGETS in the right way.
    void offer(const std::vector<std::string>& targets);

    /// Offers one target with a plain value.
    void offerValue(const std::string& target, std::string bytes);

    /// Takes the selection, at a time of the server's, which `ownedSince` gives afterwards.
    void take();
    void release(); // to nobody
    xcb_timestamp_t ownedSince();

    /// Ends parts of the program, as crashes do. There is no way back.
    void destroyWindow();
    void disconnect();

    Script silence() const;
    Script value(const std::string& type, std::string bytes, int format = 8);
    Script atoms(const std::string& type, std::vector<xcb_atom_t> atoms);
    Script increments(const std::string& type, std::vector<std::string> parts);

    void put(const Request& request, const std::string& type, std::string_view bytes, int format = 8);
    void notify(const Request& request); // that the value is in the property
    void refuse(const Request& request, std::optional<xcb_timestamp_t> time = std::nullopt);
    void announce(const Request& request, std::uint32_t hint); // increments

    /// Puts the parts one after the other, each when the one before has been taken, and the end. False if the
    /// requestor stopped taking.
    bool sendIncrements(const Request& request, const std::string& type,
                        const std::vector<std::string>& parts);

    /// Waits until the request's property does not exist. False if the window does not either, or after a
    /// long time.
    bool awaitDeletion(const Request& request);
    bool hasProperty(const Request& request);

    /// Everything that was asked so far, also what is being answered.
    std::vector<Request> requests();
    std::size_t countOf(const std::string& target);

    /// The request of that number for the target, counted from 1. Waits for it; throws std::runtime_error if
    /// it does not come.
    Request awaitRequest(const std::string& target, std::size_t number = 1);

    xcb_atom_t atom(const std::string& name);
    std::string nameOf(xcb_atom_t atom);

    xcb_connection_t* connection() { return connection_; }
    xcb_window_t window() const { return window_; }

    /// Whether the program is being ended, which scripts without an end have to ask.
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
    xcb_timestamp_t time_ = 0; // 0: not told
    xcb_timestamp_t ownedSince_ = 0;
    bool isEnding_ = false;
    std::thread thread_;
};

} // namespace tavel
