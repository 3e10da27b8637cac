#include <AppKit/AppKit.h>

@interface TavelTestTarget : NSObject
- (void)confirmName;
@end

NSButton* confirmingButton(TavelTestTarget* target) {
    return [NSButton buttonWithTitle:@"OK" target:target action:@selector(confirmName)];
}
