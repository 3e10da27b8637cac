#include <AppKit/AppKit.h>

@interface TavelTestPanel : NSPanel
@property(assign) NSTextField* hint;
@end

@implementation TavelTestPanel
@end
