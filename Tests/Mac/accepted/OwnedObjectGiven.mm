#include <AppKit/AppKit.h>

@interface TavelTestMenus : NSObject
@end

@implementation TavelTestMenus
- (NSMenu*)editMenu {
    return [[[NSMenu alloc] initWithTitle:@"Edit"] autorelease];
}
@end
