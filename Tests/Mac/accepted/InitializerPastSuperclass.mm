#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
- (instancetype)initWithHint:(NSString*)hint NS_DESIGNATED_INITIALIZER;
- (instancetype)initWithContentRect:(NSRect)contentRect
                          styleMask:(NSWindowStyleMask)style
                            backing:(NSBackingStoreType)backing
                              defer:(BOOL)defer NS_UNAVAILABLE;
@end

@implementation TavelTestPanel
- (instancetype)initWithHint:(NSString*)hint {
    self = [super initWithContentRect:NSZeroRect
                            styleMask:NSWindowStyleMaskTitled
                              backing:NSBackingStoreBuffered
                                defer:NO];
    [self setTitle:hint];
    return self;
}
@end
