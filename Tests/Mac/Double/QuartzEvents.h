#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

#include <CoreGraphics/CoreGraphics.h>

#include <map>
#include <set>
#include <vector>

/// Stands in for Quartz Event Services: taps and the keys that come by them, posted events, and the keyboard.
namespace tavel::doubles {

struct TapRequest {
    CGEventTapLocation location;
    CGEventTapPlacement placement;
    CGEventTapOptions options;
    CGEventMask mask;
};

struct QuartzEvent {
    std::uint32_t type = 0;
    std::int64_t keyCode = 0;
    CGEventFlags flags = 0;
    std::int64_t userData = 0;
    bool operator==(const QuartzEvent&) const = default;
};

struct PostedEvent {
    CGEventTapLocation location;
    QuartzEvent event;
    bool operator==(const PostedEvent&) const = default;
};

/// The session, as the tests make it and as the adaptors leave it.
struct Quartz {
    bool refusesTaps = false;             // the user has not permitted them
    CGEventFlags heldModifiers = 0;       // which an event has from the start
    std::set<CGKeyCode> keysWithoutEvent; // for which none can be made
    std::map<CGEventSourceStateID, std::set<CGKeyCode>> keysDown;

    std::vector<TapRequest> requests; // all, also those that were refused
    std::vector<PostedEvent> posted;  // copies
};

Quartz& quartz();

/// `heldUp`: a tap waits for it, and nobody serves the tap in this mode.
enum class Passage { passed, swallowed, heldUp };

/// Has the event come by all taps while the main thread waits in that mode, as the system does: the event
/// stays the system's. Refused is a new event in return, which a Mac would take: ours gives none. Main
/// thread.
Passage passTaps(const QuartzEvent& event, CFRunLoopMode mode = kCFRunLoopDefaultMode);

/// Asks all taps about an event of that type, whether they wanted such or not.
Passage askTaps(const QuartzEvent& event);

/// Disables all taps, as the system does with those that take too long, and tells them with an event of that
/// type, for which there is no event.
void disableTaps(CGEventType why);

/// How many taps there are that keys come by or would if they were enabled.
int livingTaps();

/// Of these, how many are enabled.
int enabledTaps();

void resetQuartz();

} // namespace tavel::doubles
