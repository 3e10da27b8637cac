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

/// Empty if the text is not UTF-8.
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
    // The system may refuse to activate an application that the user has not clicked. The panel must stay
    // visible even then, or the user could not end it. So it is not hidden while the application is inactive,
    // as panels are by default, and it floats above the windows of the active application.
    [self setHidesOnDeactivate:NO];
    [self setLevel:NSFloatingWindowLevel];
    // Otherwise the panel would open on the space that was active last, not on that of a full-screen file
    // manager. Deliberate: without FullScreenAuxiliary, which is for windows that accompany a full-screen
    // window of the same application, and was seen to keep windows off the spaces of others.
    [self setCollectionBehavior:NSWindowCollectionBehaviorCanJoinAllSpaces];
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
    // The push button; SDKs name the constant differently.
    [button setBezelStyle:static_cast<NSBezelStyle>(1)];
    [button setKeyEquivalent:key];
    [button setFrame:rectangleOf(area)];
    return button;
}

- (void)present {
    _isPresented = YES;
    tavel::provideEditMenu();
    // The key window receives keys once this application is active. Until then, only orderFrontRegardless
    // brings a window in front of those of the active application.
    [self makeKeyAndOrderFront:nil];
    tavel::requestActivation();
    [self orderFrontRegardless];
}

/// An inactive application has a key window, too, which gets no keys.
- (BOOL)hasKeyboard {
    return [[NSApplication sharedApplication] isActive] && [self isKeyWindow];
}

- (void)demandKeyboard {
    if (!_isPresented)
        return;
    tavel::demandActivation();
    [self makeKeyAndOrderFront:nil];
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

/// Escape may arrive both here and as the button's key: `cancel` must tolerate a second call.
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
    // The action may release the panel, which owns the action and whose methods are still on the stack. This
    // reference keeps the panel until the current event has been handled.
    [[self retain] autorelease];
    action();
}

@end
