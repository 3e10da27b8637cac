#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel <NSWindowDelegate>
@end

@implementation TavelTestPanel
- (void)attend {
    [self setDelegate:self];
}
@end
