#pragma once

#include "Tests/Mac/Double/CoreObjects.h"

#include <CoreGraphics/CoreGraphics.h>

#include <map>
#include <set>
#include <vector>

/// A double of Quartz Event Services: taps and their events, posted events, and the state of the keyboard.
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
    std::int64_t autorepeat = 0; // 1 if the key is held
    bool operator==(const QuartzEvent&) const = default;
};

struct PostedEvent {
    CGEventTapLocation location;
    QuartzEvent event;
    bool operator==(const PostedEvent&) const = default;
};

/// The login session: what a test prescribes, and what the adaptors did.
struct Quartz {
    bool refusesTaps = false;             // the user has not granted the permission, or has taken it away
    CGEventFlags heldModifiers = 0;       // the initial flags of each new event
    std::set<CGKeyCode> keysWithoutEvent; // no event can be created for these
    std::map<CGEventSourceStateID, std::set<CGKeyCode>> keysDown;

    int stalls = 0; // how often a tap was enabled without permission: no input reaches any program
    std::vector<TapRequest> requests; // refused ones included
    std::vector<PostedEvent> posted;  // copies
};

Quartz& quartz();

/// `heldUp`: an enabled tap wants the event, but the run loop does not serve the tap in this mode, or the tap
/// has lost the permission.
enum class Passage { passed, swallowed, heldUp };

/// Sends the event through all taps while the main thread waits in `mode`. The event stays the system's. Ends
/// the program if a tap returns a new event, which a Mac would accept but ours never does. Main thread.
Passage passTaps(const QuartzEvent& event, CFRunLoopMode mode = kCFRunLoopDefaultMode);

/// The same, whether or not the taps asked for events of that type.
Passage askTaps(const QuartzEvent& event);

/// Disables all taps, as the system does with slow ones, and notifies each with the type `why` and a null
/// event.
void disableTaps(CGEventType why);

/// The number of valid taps, enabled or not.
int livingTaps();

/// The number of valid taps that are enabled.
int enabledTaps();

void resetQuartz();

} // namespace tavel::doubles
