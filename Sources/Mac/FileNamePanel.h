#pragma once

#include "Platform/NamePanelView.h"

#import <AppKit/AppKit.h>

NS_ASSUME_NONNULL_BEGIN

/// The naming panel's window, laid out by NamePanelLayout.h. It reports the user's actions and never closes
/// itself. An action may dismiss and release the panel. Main thread only.
@interface FileNamePanel : NSPanel <NSWindowDelegate> {
@private
    NSTextField* _field;               // owned by the content view
    NSTextField* _hint;                // owned by the content view
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

/// Shows the panel and requests the keyboard focus for its text field. Call it once only.
- (void)present;

/// Whether the user's keys go to the panel.
- (BOOL)hasKeyboard;

/// Takes the keyboard focus from another application. Does nothing unless the panel is presented.
- (void)demandKeyboard;

/// Takes the panel off the screen for good. Actions are reported only between `present` and `dismiss`.
- (void)dismiss;

/// The field's text at the last confirmation; before the first, the proposed stem.
- (NSString*)enteredText;

- (void)showHint:(NSString*)hint;

- (void)confirmName;
- (void)cancelName;

@end

NS_ASSUME_NONNULL_END
