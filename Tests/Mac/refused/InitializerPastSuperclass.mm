#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
- (instancetype)initWithHint:(NSString*)hint NS_DESIGNATED_INITIALIZER;
@end

@implementation TavelTestPanel
// expected-warning@-1 {{method override for the designated initializer of the superclass}}
- (instancetype)initWithHint:(NSString*)hint {
    // expected-warning@-1 {{missing a 'super' call to a designated initializer}}
    self = [super init]; // expected-warning {{designated initializer invoked a non-designated initializer}}
    [self setTitle:hint];
    return self;
}
@end
