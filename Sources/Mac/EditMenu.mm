#include "Mac/EditMenu.h"

#include "Mac/Retained.h"

#import <AppKit/AppKit.h>

/// Actions that windows handle for their text views, but that no header declares.
@protocol TavelUndoing
- (void)undo:(id)sender;
- (void)redo:(id)sender;
@end

namespace tavel {

namespace {

// Deliberate: no titles. Nobody sees them, and the system adds commands to a menu that is called "Edit".
NSString* const noTitle = @"";

/// Has no target, so that the action goes to the first responder.
void addCommand(NSMenu* menu, SEL action, NSString* key) {
    [menu addItemWithTitle:noTitle action:action keyEquivalent:key];
}

Retained<NSMenu> makeMainMenu() {
    const auto commands = Retained<NSMenu>::adopt([[NSMenu alloc] initWithTitle:noTitle]);
    addCommand(commands.get(), @selector(undo:), @"z");
    addCommand(commands.get(), @selector(redo:), @"Z"); // with Shift
    addCommand(commands.get(), @selector(cut:), @"x");
    addCommand(commands.get(), @selector(copy:), @"c");
    addCommand(commands.get(), @selector(paste:), @"v");
    addCommand(commands.get(), @selector(selectAll:), @"a");

    auto menu = Retained<NSMenu>::adopt([[NSMenu alloc] initWithTitle:noTitle]);
    [menu.get() setSubmenu:commands.get()
                   forItem:[menu.get() addItemWithTitle:noTitle action:nullptr keyEquivalent:@""]];
    return menu;
}

} // namespace

void provideEditMenu() {
    // Kept for ever, as by the application.
    static const auto* const menu = new Retained<NSMenu>(makeMainMenu());
    NSApplication* const application = [NSApplication sharedApplication];
    if ([application mainMenu] != menu->get())
        [application setMainMenu:menu->get()];
}

} // namespace tavel
