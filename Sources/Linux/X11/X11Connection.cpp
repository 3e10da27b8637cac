#include "Linux/X11/X11Connection.h"

#include "Platform/PasteboardTypes.h"

#include <poll.h>
#include <sys/socket.h>
#include <xcb/bigreq.h>
#include <xcb/xcbext.h>
#include <xcb/xfixes.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <utility>

namespace tavel {

namespace {

/// Bounds the memory that other programs can make this process use with ever new names.
constexpr std::size_t mostRememberedAtoms = 1024;

/// No longer name is of use. The server has names of up to 65,535 bytes.
constexpr std::size_t longestAtomName = pasteboardType::longestNameBytes;

/// How many names are on their way at once: two megabytes if each has the server's largest length, and one
/// round trip for the types of an ordinary program.
constexpr std::size_t namesAtOnce = 32;

/// Some requestors, such as xsel, read no more of a property and ignore the rest.
constexpr std::size_t largestCommonPropertyBytes = 4'000'000;

/// Room for the fields of ChangeProperty before the value, with a margin.
constexpr std::size_t requestOverheadBytes = 64;

constexpr const char* timePropertyName = "TAVEL_TIME";
constexpr std::chrono::seconds fetchTimeTimeOut{5};

/// Longer than any usual burst takes. During a flood, everything else in the process gets its turn after it.
constexpr std::chrono::milliseconds longestBatch{4};

/// How long the server may take for a reply when the process is about to end, and how often a wait looks
/// whether it is.
constexpr std::chrono::seconds longestLastWait{1};
constexpr std::chrono::milliseconds timeBetweenLooks{100};

/// For a connection that no X11Connection owns yet: making one may throw.
struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

const xcb_screen_t* screenOf(xcb_connection_t* connection, int number) {
    xcb_screen_iterator_t screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
    while (screens.rem > 1 && number-- > 0)
        xcb_screen_next(&screens);
    return screens.rem > 0 ? screens.data : nullptr;
}

/// xcb does not tell a server that is not there from one that refuses this program.
std::string refusalOf(int error, const char* display) {
    const char* const named =
        display != nullptr ? display : std::getenv("DISPLAY"); // NOLINT(concurrency-mt-unsafe)
    const std::string name = named != nullptr ? named : "";
    switch (error) {
    case XCB_CONN_CLOSED_PARSE_ERR:
        return "\"" + name + "\" is no name of a display";
    case XCB_CONN_CLOSED_INVALID_SCREEN:
        return "the X server has no such screen as " + name + " says";
    default:
        return "no X server answers at " + name + ", or it does not let this user in";
    }
}

} // namespace

std::unique_ptr<X11Connection> X11Connection::open(const char* display, std::vector<std::string> names,
                                                   std::string* refusal) {
    const auto refuse = [refusal](const std::string& reason) {
        if (refusal != nullptr)
            *refusal = reason;
        return nullptr;
    };
    int screenNumber = 0;
    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(display, &screenNumber));
    const int error = xcb_connection_has_error(connection.get());
    if (error != 0)
        return refuse(refusalOf(error, display));
    const xcb_screen_t* const screen = screenOf(connection.get(), screenNumber);
    if (screen == nullptr)
        return refuse("the X server has no screen");
    // The replies come with those about the names.
    xcb_prefetch_extension_data(connection.get(), &xcb_xfixes_id);
    xcb_prefetch_extension_data(connection.get(), &xcb_big_requests_id);
    std::unique_ptr<X11Connection> opened(new X11Connection(connection.get(), *screen, std::move(names)));
    static_cast<void>(connection.release()); // the object disconnects it now
    if (!opened->useExtensions())
        return refuse("the X server lacks the extension XFIXES");
    return opened;
}

X11Connection::X11Connection(xcb_connection_t* connection, const xcb_screen_t& screen,
                             std::vector<std::string> names)
    : connection_(connection), window_(xcb_generate_id(connection)),
      queue_(xcb_get_setup(connection)->resource_id_mask) {
    const std::uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window_, screen.root, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK, &events);
    names.emplace_back(timePropertyName);
    timeProperty_ = atoms(names).back();
}

/// Waits for no reply: those of both requests come with that to the next one. False without XFixes.
bool X11Connection::useExtensions() {
    const xcb_query_extension_reply_t* const fixes = xcb_get_extension_data(connection_, &xcb_xfixes_id);
    if (fixes == nullptr || fixes->present == 0)
        return false;
    selectionOwnerEvent_ = static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    // XFixes demands this before any other request.
    const auto version =
        xcb_xfixes_query_version(connection_, XCB_XFIXES_MAJOR_VERSION, XCB_XFIXES_MINOR_VERSION);
    xcb_discard_reply(connection_, version.sequence);
    xcb_prefetch_maximum_request_length(connection_);
    return true;
}

X11Connection::~X11Connection() {
    xcb_disconnect(connection_);
}

std::size_t X11Connection::largestPropertyBytes() const {
    const std::size_t largestRequest = std::size_t{xcb_get_maximum_request_length(connection_)} * 4;
    return std::min(largestRequest - requestOverheadBytes, largestCommonPropertyBytes);
}

xcb_atom_t X11Connection::atom(std::string_view name) {
    const std::string one(name);
    return atoms({&one, 1}).front();
}

std::vector<xcb_atom_t> X11Connection::atoms(std::span<const std::string> names) {
    std::vector<xcb_atom_t> found;
    std::vector<std::pair<std::size_t, xcb_intern_atom_cookie_t>> asked;
    for (const std::string& name : names) {
        const auto known = atoms_.find(name);
        found.push_back(known != atoms_.end() ? known->second : xcb_atom_t{XCB_ATOM_NONE});
        if (known == atoms_.end())
            asked.emplace_back(
                found.size() - 1,
                xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()));
    }
    for (const auto& [position, cookie] : asked) {
        const auto reply = await(cookie, xcb_intern_atom_reply);
        if (reply == nullptr)
            continue;
        found[position] = reply->atom;
        remember(names[position], reply->atom);
    }
    return found;
}

std::vector<std::string> X11Connection::atomNames(std::span<const xcb_atom_t> atoms) {
    std::vector<std::string> found;
    while (!atoms.empty()) {
        const auto some = atoms.first(std::min(atoms.size(), namesAtOnce));
        appendNames(found, some);
        atoms = atoms.subspan(some.size());
    }
    return found;
}

void X11Connection::appendNames(std::vector<std::string>& names, std::span<const xcb_atom_t> atoms) {
    std::vector<std::pair<std::size_t, xcb_get_atom_name_cookie_t>> asked;
    const std::size_t first = names.size();
    for (const xcb_atom_t atom : atoms) {
        const auto known = names_.find(atom);
        names.push_back(known != names_.end() ? known->second : std::string());
        if (known == names_.end())
            asked.emplace_back(names.size() - 1, xcb_get_atom_name(connection_, atom));
    }
    for (const auto& [position, cookie] : asked) {
        const auto reply = await(cookie, xcb_get_atom_name_reply);
        if (reply == nullptr)
            continue;
        const auto length = static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()));
        if (length <= longestAtomName)
            names[position].assign(xcb_get_atom_name_name(reply.get()), length);
        remember(names[position], atoms[position - first]);
    }
}

void X11Connection::remember(const std::string& name, xcb_atom_t atom) {
    if (names_.size() >= mostRememberedAtoms) {
        names_.clear();
        atoms_.clear();
    }
    names_[atom] = name;
    if (!name.empty())
        atoms_[name] = atom;
}

/// The caller frees the reply.
void* X11Connection::waitForReply(std::uint32_t requestNumber) {
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    const auto isDecided = [&] {
        return xcb_poll_for_reply(connection_, requestNumber, &reply, &error) != 0;
    };
    xcb_flush(connection_);
    const auto begin = Clock::now();
    while (!isDecided()) {
        if (takeIn())
            continue;
        if (isDecided()) // reading may have brought the reply without any event
            break;
        pollfd readable{descriptor(), POLLIN, 0};
        const bool isSilent = poll(&readable, 1, static_cast<int>(timeBetweenLooks.count())) == 0;
        if (isSilent && isEndExpected_ && Clock::now() - begin >= longestLastWait)
            shutdown(descriptor(), SHUT_RDWR); // xcb takes it for the loss of the server
    }
    std::free(error);
    return reply;
}

void X11Connection::dispatchEvents() {
    xcb_flush(connection_);
    const auto end = Clock::now() + longestBatch;
    do {
        takeIn();
        if (queue_.isEmpty())
            return;
        dispatch(queue_.next());
    } while (Clock::now() < end);
}

/// Takes in what has arrived. xcb reads from the server only if it has no event left, and then some hundred
/// at most. False if there was none.
bool X11Connection::takeIn() {
    Event event(xcb_poll_for_event(connection_));
    if (event == nullptr)
        return false;
    takeIn(std::move(event));
    takeInQueued();
    return true;
}

/// Takes in what xcb has read, together with a reply, for instance.
void X11Connection::takeInQueued() {
    while (Event event{xcb_poll_for_queued_event(connection_)})
        takeIn(std::move(event));
}

void X11Connection::takeIn(Event event) {
    try {
        const Event excess = queue_.push(std::move(event));
        if (excess != nullptr && excessHandler_)
            excessHandler_(*excess);
    } catch (const std::bad_alloc&) {
        // Lost: it costs one answer or one change. GLib's code, which calls this, must see no exception.
    }
}

void X11Connection::synchronize() {
    const auto cookie = xcb_get_input_focus(connection_);
    await(cookie, xcb_get_input_focus_reply);
    takeInQueued();
    while (queue_.hasEventBefore(cookie.sequence))
        dispatch(queue_.next());
}

bool X11Connection::hasQueuedEvent() {
    takeInQueued();
    return !queue_.isEmpty();
}

bool X11Connection::waitForEvents(Clock::time_point deadline) {
    xcb_flush(connection_);
    if (!hasQueuedEvent()) {
        const auto wait = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
        pollfd readable{descriptor(), POLLIN, 0};
        if (isLost() || poll(&readable, 1, static_cast<int>(std::max<std::int64_t>(wait.count(), 0))) <= 0)
            return false;
    }
    dispatchEvents();
    return !isLost();
}

void X11Connection::dispatch(Event event) {
    if (event->response_type == XCB_PROPERTY_NOTIFY) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(*event);
        latestTime_ = change.time;
        if (change.window == window_ && change.atom == timeProperty_) {
            timeCame_ = true;
            return;
        }
    }
    try {
        if (handler_)
            handler_(*event);
    } catch (const std::bad_alloc&) {
        // As in `takeIn`.
    }
}

xcb_timestamp_t X11Connection::fetchTime() {
    requestTime();
    return awaitTime();
}

void X11Connection::requestTime() {
    // PropertyNotify carries the server's time, also for a change that appends no data (ICCCM 2.1).
    timeCame_ = false;
    xcb_change_property(connection_, XCB_PROP_MODE_APPEND, window_, timeProperty_, XCB_ATOM_INTEGER, 32, 0,
                        nullptr);
}

xcb_timestamp_t X11Connection::awaitTime() {
    const auto begin = Clock::now();
    const auto deadline = [&] { return begin + (isEndExpected_ ? longestLastWait : fetchTimeTimeOut); };
    while (!timeCame_ && !isLost() && Clock::now() < deadline())
        waitForEvents(std::min(deadline(), Clock::now() + timeBetweenLooks));
    return timeCame_ ? latestTime_ : XCB_CURRENT_TIME;
}

} // namespace tavel
