#pragma once

#import <AppKit/NSApplication.h>
#import <AppKit/NSEvent.h>
#import <AppKit/NSRunningApplication.h>

#include <functional>

/// What GNUstep's application lacks, with the behaviour that Apple documents.

static const NSEventMask NSEventMaskAny = NSUIntegerMax;

enum : NSEventType { NSEventTypeApplicationDefined = NSApplicationDefined };

/// Also lets any thread post an event; GNUstep's own -postEvent:atStart: works on the main thread only.
@interface NSApplication (TavelAdditions)

/// Hides the application's icon and menu for the accessory policy. Returns NO for any other policy, which is
/// not supported.
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;

/// Makes -activateIgnoringOtherApps: ask `grants`, with its argument, whether to activate the application.
/// Initially, and with an empty function, it always does. `grants` is not asked when GNUstep itself activates
/// the application, because a window has got the focus.
+ (void)setActivationGrants:(const std::function<bool(BOOL)>&)grants;

@end
