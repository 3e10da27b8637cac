#include "Mac/FileNamePanel.h"

#include "Mac/Application.h"
#include "Mac/EditMenu.h"
#include "Mac/Strings.h"
#include "Platform/NamePanelLayout.h"

#include <cstdlib>
#include <functional>
#include <string_view>

namespace layout = tavel::namePanelLayout;

namespace {

NSString* const escapeKey = @"\x1B";
NSString* const returnKey = @"\r";

NSRect rectangleOf(const tavel::ScreenRectangle& area) {
    return NSMakeRect(area.x, area.y, area.width, area.height);
}

/// Nothing is shown of what is not UTF-8.
NSString* shown(std::string_view text) {
    NSString* const string = tavel::stringFromUtf8(text);
    return string == nil ? @"" : string;
}

} // namespace

@implementation FileNamePanel

- (instancetype)initWithTexts:(const tavel::NamePanelTexts&)texts
                      actions:(const tavel::NamePanelActions&)actions {
    self = [super initWithContentRect:NSMakeRect(0, 0, layout::content.width, layout::content.height)
                            styleMask:NSWindowStyleMaskTitled | NSWindowStyleMaskClosable
                              backing:NSBackingStoreBuffered
                                defer:NO];
    if (self == nil)
        return nil;
    _actions = new tavel::NamePanelActions(actions);
    _enteredText = [shown(texts.stem) copy];
    [self setTitle:shown(texts.title)];
    [self setReleasedWhenClosed:NO];
    [self setDelegate:self];
    // The system may refuse to activate an application that the user has not touched. The panel has to be
    // seen all the same, or nobody could end it: not hidden with its application, as panels are, and above
    // the other application's windows, also when the user clicks on one.
    [self setHidesOnDeactivate:NO];
    [self setLevel:NSFloatingWindowLevel];
    [self addViewsWithTexts:texts];
    return self;
}

- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer {
    (void)contentRect;
    (void)style;
    (void)backing;
    (void)defer;
    std::abort();
}

- (void)dealloc {
    [_enteredText release];
    delete _actions;
    [super dealloc];
}

- (void)addViewsWithTexts:(const tavel::NamePanelTexts&)texts {
    NSTextField* const extensionLabel = [NSTextField labelWithString:shown(texts.extensionLabel)];
    [extensionLabel setFrame:rectangleOf(layout::extensionLabel)];
    _field = [NSTextField textFieldWithString:_enteredText];
    [_field setFrame:rectangleOf(layout::field)];
    _hint = [NSTextField wrappingLabelWithString:@""];
    [_hint setFrame:rectangleOf(layout::hint)];

    NSView* const content = [self contentView];
    [content addSubview:extensionLabel];
    [content addSubview:_field];
    [content addSubview:_hint];
    [content addSubview:[self buttonWithTitle:shown(texts.cancelTitle)
                                       action:@selector(cancelName)
                                          key:escapeKey
                                         area:layout::cancelButton]];
    [content addSubview:[self buttonWithTitle:shown(texts.confirmTitle)
                                       action:@selector(confirmName)
                                          key:returnKey
                                         area:layout::confirmButton]];
    [self setInitialFirstResponder:_field];
}

- (NSButton*)buttonWithTitle:(NSString*)title
                      action:(SEL)action
                         key:(NSString*)key
                        area:(const tavel::ScreenRectangle&)area {
    NSButton* const button = [NSButton buttonWithTitle:title target:self action:action];
    [button setBezelStyle:static_cast<NSBezelStyle>(1)]; // the push button, whose name is not always the same
    [button setKeyEquivalent:key];
    [button setFrame:rectangleOf(area)];
    return button;
}

- (void)present {
    _isPresented = YES;
    tavel::provideEditMenu();
    // It becomes the key window of this application, which gets keys once it is the active one. In front of
    // another application's windows comes only what does not ask which one is active.
    [self makeKeyAndOrderFront:nil];
    tavel::requestActivation();
    [self orderFrontRegardless];
}

- (void)dismiss {
    _isPresented = NO;
    [self orderOut:nil];
}

- (NSString*)enteredText {
    return _enteredText;
}

- (void)showHint:(NSString*)hint {
    [_hint setStringValue:hint];
}

- (void)confirmName {
    NSString* const text = [[_field stringValue] copy];
    [_enteredText release];
    _enteredText = text;
    [self report:_actions->confirm];
}

- (void)cancelName {
    [self report:_actions->cancel];
}

/// One key can come as a button's and as this. Whoever is told has to bear that.
- (void)cancelOperation:(nullable id)sender {
    (void)sender;
    [self cancelName];
}

- (BOOL)windowShouldClose:(NSWindow*)sender {
    (void)sender;
    [self cancelName];
    return NO;
}

- (void)report:(const std::function<void()>&)action {
    if (!_isPresented || !action)
        return;
    // The action may release the panel. It stays until the event that led here is dealt with: the window's
    // own methods are still on the stack, and the action is the panel's.
    [[self retain] autorelease];
    action();
}

@end
