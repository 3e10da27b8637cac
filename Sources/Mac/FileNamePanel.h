#pragma once

#include "Platform/NamePanelView.h"

#import <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

/// The naming panel's window, laid out as NamePanelLayout.h says. It reports what the user did, and never
/// closes itself. An action may dismiss and release it. Main thread only.
@interface FileNamePanel : NSPanel <NSWindowDelegate> {
@private
    NSTextField* _field;               // the content view's
    NSTextField* _hint;                // the content view's
    NSString* _enteredText;            // owned
    tavel::NamePanelActions* _actions; // owned
    BOOL _isPresented;
}

- (instancetype)initWithTexts:(const tavel::NamePanelTexts&)texts
                      actions:(const tavel::NamePanelActions&)actions;

- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer NS_UNAVAILABLE;

/// Shows the panel, and asks for the keyboard focus, for the field. Once only.
- (void)present;

/// Takes the panel off the screen for good. Actions are reported between `present` and this.
- (void)dismiss;

/// What the field held when it was confirmed last; the stem before that.
- (NSString*)enteredText;

- (void)showHint:(NSString*)hint;

- (void)confirmName;
- (void)cancelName;

@end

NS_ASSUME_NONNULL_END
