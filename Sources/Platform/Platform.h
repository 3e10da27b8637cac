#pragma once

#include "Platform/EventLoop.h"
#include "Platform/FocusProbe.h"
#include "Platform/ImageCodec.h"
#include "Platform/KeyboardTap.h"
#include "Platform/NamePanelView.h"
#include "Platform/Pasteboard.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavel {

/// What the agent asks of an operating system. One implementation makes all parts, so that they fit each
/// other. Main thread only. Returned references are valid as long as the platform.
class Platform {
public:
    virtual ~Platform() = default;

    /// The pasteboard of that name, which the first use creates; the general pasteboard without a name.
    /// Throws Error when the platform's pasteboards cannot be used at all.
    virtual std::shared_ptr<Pasteboard> openPasteboard(const std::optional<std::string>& name) = 0;

    /// Says in plain words where the pasteboard of that name is, for people: "the clipboard of ...".
    virtual std::string describePasteboard(const std::optional<std::string>& name) = 0;

    /// Whether other programs depend on this process for a content that it put on a pasteboard: such content
    /// is lost when the process ends.
    virtual bool servesContents() = 0;

    /// Hands such content to the platform's clipboard manager, if there is one. To be called at the process's
    /// end; takes a second at most.
    virtual void handOverContents() = 0;

    virtual EventLoop& eventLoop() = 0;
    virtual ImageCodec& imageCodec() = 0;
    virtual KeyboardTap& keyboardTap() = 0;
    virtual FocusProbe& focusProbe() = 0;

    /// From now on, `lost` runs in the event loop once the process that started this one is not, or no
    /// longer, that one; also if it has ended before this call. False if the system cannot tell: then its
    /// number has to be looked at from time to time. To be called until it returns, and then no more.
    virtual bool watchParent(std::int32_t processIdentifier, std::function<void()> lost) = 0;

    /// The process is about to end: from now on, a wait for the display server gives up after a second, and
    /// the server is lost then. Any thread.
    virtual void expectEnd() = 0;

    /// Whether a naming panel can be shown here, as far as that can be told without making one. Costs no more
    /// than a look at a file.
    virtual bool canShowNamePanel() = 0;

    /// A naming panel's window, not shown yet. Null if no window can be shown here.
    virtual std::unique_ptr<NamePanelView> makeNamePanelView(const NamePanelTexts& texts,
                                                             NamePanelActions actions) = 0;

    /// The file URL (RFC 8089) of an absolute path, as this platform's programs write it on a pasteboard.
    /// That of an existing directory ends in a slash.
    virtual std::string fileUrl(const std::string& path) = 0;

    /// The present date and time as yyyy-MM-dd-HHmmss (Unicode TR 35), in the calendar, the digits and the
    /// time zone of the user.
    virtual std::string localTimestamp() = 0;

    /// The directory for the user's temporary files. It may not exist.
    virtual std::filesystem::path temporaryDirectory() = 0;

    /// Makes the process a background accessory, without an icon or a menu. It may still show a panel.
    virtual void becomeAccessory() = 0;

    /// Writes a line to the system's log, never to standard error.
    virtual void log(const std::string& message) = 0;
};

/// A place for the pasteboards that `makePlatform` did not choose, and why not, for people.
struct PassedOverPlace {
    std::string name;   // "Wayland"
    std::string reason; // a clause: "WAYLAND_DISPLAY is not set"
    bool isNamed;       // whether the environment names it: if so, it is there and cannot be used, or is gone
};

/// The platform of this machine. Called once, by a program's `main`. Appends the places that come before the
/// chosen one to `passedOver`, if that is not null, the most preferred one first.
std::unique_ptr<Platform> makePlatform(std::vector<PassedOverPlace>* passedOver = nullptr);

} // namespace tavel
