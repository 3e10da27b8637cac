#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel <NSWindowDelegate>
@end

@implementation TavelTestPanel
- (BOOL)windowShouldClose:(NSWindow*)sender {
    [sender orderOut:nil];
    return NO;
}
@end
