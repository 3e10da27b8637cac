#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
@property(weak) NSTextField* hint;
@end

@implementation TavelTestPanel // expected-error {{cannot synthesize weak property}}
@end
