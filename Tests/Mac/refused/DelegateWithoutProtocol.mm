#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
@end

@implementation TavelTestPanel
- (void)attend {
    [self setDelegate:self]; // expected-error {{cannot initialize a parameter of type 'id<NSWindowDelegate>}}
}
@end
