#include "Mac/EditMenu.h"

#include "Mac/Retained.h"

#import <AppKit/AppKit.h>

/// Text views, and windows for them, answer to these, which no header says.
@protocol TavelUndoing
- (void)undo:(id)sender;
- (void)redo:(id)sender;
@end

namespace tavel {

namespace {

// Deliberate: no titles. Nobody sees them, and to a menu that is called "Edit" the system adds commands.
NSString* const noTitle = @"";

/// Whoever has the keyboard focus is meant.
void addCommand(NSMenu* menu, SEL action, NSString* key) {
    [menu addItemWithTitle:noTitle action:action keyEquivalent:key];
}

} // namespace

void provideEditMenu() {
    NSApplication* const application = [NSApplication sharedApplication];
    if ([application mainMenu] != nil)
        return;
    const auto commands = Retained<NSMenu>::adopt([[NSMenu alloc] initWithTitle:noTitle]);
    addCommand(commands.get(), @selector(undo:), @"z");
    addCommand(commands.get(), @selector(redo:), @"Z"); // with Shift
    addCommand(commands.get(), @selector(cut:), @"x");
    addCommand(commands.get(), @selector(copy:), @"c");
    addCommand(commands.get(), @selector(paste:), @"v");
    addCommand(commands.get(), @selector(selectAll:), @"a");

    const auto menu = Retained<NSMenu>::adopt([[NSMenu alloc] initWithTitle:noTitle]);
    [menu.get() setSubmenu:commands.get()
                   forItem:[menu.get() addItemWithTitle:noTitle action:nullptr keyEquivalent:@""]];
    [application setMainMenu:menu.get()];
}

} // namespace tavel
