#pragma once

#import <AppKit/NSApplication.h>
#import <AppKit/NSEvent.h>
#import <AppKit/NSRunningApplication.h>

/// What GNUstep's application lacks, with the behaviour that Apple documents.

static const NSEventMask NSEventMaskAny = NSUIntegerMax;

enum : NSEventType { NSEventTypeApplicationDefined = NSApplicationDefined };

/// Also lets any thread post an event; GNUstep's own -postEvent:atStart: works on the main thread only.
@interface NSApplication (TavelAdditions)

/// Hides the application's icon and menu for the accessory policy. Returns NO for any other policy, which is
/// not supported.
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;

/// Makes this the active application, whichever is active now.
- (void)activate;

@end
