#import <AppKit/AppKit.h>

namespace {

/// The settings that all three kinds of text fields share.
void setUp(NSTextField* field, NSString* string) {
    [field setFont:[NSFont systemFontOfSize:[NSFont systemFontSize]]];
    [field setStringValue:string];
}

void makeLabel(NSTextField* field) {
    [field setEditable:NO];
    [field setBezeled:NO];
    [field setBordered:NO];
    [field setDrawsBackground:NO];
}

} // namespace

@implementation NSTextField (TavelAdditions)

+ (instancetype)labelWithString:(NSString*)string {
    NSTextField* const label = [[[self alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)] autorelease];
    setUp(label, string);
    makeLabel(label);
    [label setSelectable:NO];
    [[label cell] setWraps:NO];
    [label sizeToFit];
    return label;
}

+ (instancetype)wrappingLabelWithString:(NSString*)string {
    NSTextField* const label = [[[self alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)] autorelease];
    setUp(label, string);
    makeLabel(label);
    [label setSelectable:YES];
    [[label cell] setWraps:YES];
    return label;
}

+ (instancetype)textFieldWithString:(NSString*)string {
    NSTextField* const field = [[[self alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)] autorelease];
    setUp(field, string);
    [field setEditable:YES];
    [field setBezeled:YES];
    [field setDrawsBackground:YES];
    [[field cell] setWraps:NO];
    [[field cell] setScrollable:YES];
    [field sizeToFit];
    return field;
}

@end

@implementation NSButton (TavelAdditions)

+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action {
    NSButton* const button = [[[self alloc] initWithFrame:NSMakeRect(0, 0, 0, 0)] autorelease];
    [button setButtonType:NSMomentaryPushInButton];
    [button setBezelStyle:NSRoundedBezelStyle];
    [button setFont:[NSFont systemFontOfSize:[NSFont systemFontSize]]];
    [button setTitle:title];
    [button setTarget:target];
    [button setAction:action];
    [button sizeToFit];
    return button;
}

@end
