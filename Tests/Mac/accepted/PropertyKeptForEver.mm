#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
@property(retain) NSTextField* hint;
@end

@implementation TavelTestPanel
- (void)dealloc {
    [_hint release];
    [super dealloc];
}
@end
