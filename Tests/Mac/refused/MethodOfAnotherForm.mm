#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel <NSWindowDelegate>
@end

@implementation TavelTestPanel
- (void)windowShouldClose:(NSWindow*)sender {
    // expected-warning@-1 {{conflicting return type in declaration}}
    // expected-warning@-2 {{conflicting return type in implementation}}
    [sender orderOut:nil];
}
@end
