#pragma once

#include "AppKit/NSEvent.h"
#include "AppKit/NSResponder.h"
#include "AppKit/NSRunningApplication.h"

NS_ASSUME_NONNULL_BEGIN

@class NSMenu, NSWindow;

@interface NSApplication : NSResponder
@property(class, readonly, strong) __kindof NSApplication* sharedApplication;
@property(nullable, strong) NSMenu* mainMenu;
@property(getter=isActive, readonly) BOOL active;
- (void)finishLaunching;
- (BOOL)setActivationPolicy:(NSApplicationActivationPolicy)policy;
- (void)activateIgnoringOtherApps:(BOOL)ignoreOtherApps API_DEPRECATED("Use activate", macos(10.0, 27.0));
- (void)activate API_AVAILABLE(macos(14.0));
- (void)yieldActivationToApplication:(NSRunningApplication*)application API_AVAILABLE(macos(14.0));
- (nullable NSEvent*)nextEventMatchingMask:(NSEventMask)mask
                                 untilDate:(nullable NSDate*)expiration
                                    inMode:(NSRunLoopMode)mode
                                   dequeue:(BOOL)dequeue;
- (void)sendEvent:(NSEvent*)event;
- (void)postEvent:(NSEvent*)event atStart:(BOOL)atStart;
@end

OBJC_EXPORT __kindof NSApplication* _Null_unspecified NSApp;

NS_ASSUME_NONNULL_END
