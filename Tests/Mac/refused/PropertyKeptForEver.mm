#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
@property(retain) NSTextField* hint;
@end

@implementation TavelTestPanel
- (void)dealloc {
    [super dealloc]; // expected-warning {{was retained by a synthesized property but not released}}
}
@end
