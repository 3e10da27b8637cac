#pragma once

#import <AppKit/NSApplication.h>
#import <AppKit/NSEvent.h>
#import <AppKit/NSRunningApplication.h>

/// What GNUstep's application does not have, with the behaviour that Apple documents.

static const NSEventMask NSEventMaskAny = NSUIntegerMax;

enum : NSEventType { NSEventTypeApplicationDefined = NSApplicationDefined };

/// An event may be posted from any thread; GNUstep's own -postEvent:atStart: is for the main thread only.
@interface NSApplication (TavelAdditions)

/// An accessory has neither an icon nor a menu on the screen. NO for any other policy: the application cannot
/// be changed to it here.
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;

/// Asks to become the active application, in front of whichever is.
- (void)activate;

@end
