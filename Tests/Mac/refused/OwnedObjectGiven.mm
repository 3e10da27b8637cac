#include <AppKit/AppKit.h>

@interface TavelTestMenus : NSObject
@end

@implementation TavelTestMenus
- (NSMenu*)editMenu {
    return [[NSMenu alloc] initWithTitle:@"Edit"]; // expected-warning {{Potential leak of an object of type}}
}
@end
