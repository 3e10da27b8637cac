#pragma once

#include "AppKit/NSResponder.h"
#include "AppKit/NSView.h"

NS_ASSUME_NONNULL_BEGIN

typedef NSUInteger NSWindowStyleMask;

enum : NSWindowStyleMask {
    NSWindowStyleMaskTitled = 1 << 0,
    NSWindowStyleMaskClosable = 1 << 1,
};

enum NSBackingStoreType : NSUInteger {
    NSBackingStoreRetained API_DEPRECATED("Use NSBackingStoreBuffered", macos(10.0, 10.13)) = 0,
    NSBackingStoreBuffered = 2,
};

typedef NSUInteger NSWindowCollectionBehavior;

enum : NSWindowCollectionBehavior {
    NSWindowCollectionBehaviorCanJoinAllSpaces = 1 << 0,
};

typedef NSInteger NSWindowLevel;

const NSWindowLevel NSFloatingWindowLevel = 3;

@class NSScreen, NSText, NSWindow;

@protocol NSWindowDelegate <NSObject>
@optional
- (BOOL)windowShouldClose:(NSWindow*)sender;
@end

@interface NSWindow : NSResponder
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer NS_DESIGNATED_INITIALIZER;
@property(copy) NSString* title;
@property(nullable, weak) id<NSWindowDelegate> delegate;
@property(nullable, strong) __kindof NSView* contentView;
@property(nullable, weak) NSView* initialFirstResponder;
@property(getter=isReleasedWhenClosed) BOOL releasedWhenClosed;
@property BOOL hidesOnDeactivate;
@property NSWindowLevel level;
@property NSWindowCollectionBehavior collectionBehavior;
@property(readonly) NSRect frame;
@property(readonly) NSWindowStyleMask styleMask;
@property(readonly) BOOL canBecomeKeyWindow;
@property(getter=isKeyWindow, readonly) BOOL keyWindow;
@property(getter=isVisible, readonly) BOOL visible;
@property(nullable, readonly, weak) NSResponder* firstResponder;
- (nullable NSText*)fieldEditor:(BOOL)create forObject:(nullable id)object;
- (void)performClose:(nullable id)sender;
@property(nullable, readonly, strong) NSScreen* screen;
- (void)setFrameOrigin:(NSPoint)point;
- (void)makeKeyAndOrderFront:(nullable id)sender;
- (void)orderFrontRegardless;
- (void)orderOut:(nullable id)sender;
@end

NS_ASSUME_NONNULL_END
