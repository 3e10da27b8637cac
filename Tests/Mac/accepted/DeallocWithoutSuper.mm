#include <AppKit/AppKit.h>

@interface TavelTestData : NSData {
    char* _text; // owned
}
@end

@implementation TavelTestData
- (void)dealloc {
    delete[] _text;
    [super dealloc];
}
@end
