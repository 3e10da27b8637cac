#include <AppKit/AppKit.h>

@interface TavelTestData : NSData {
    char* _text; // owned
}
@end

@implementation TavelTestData
- (void)dealloc {
    delete[] _text;
} // expected-warning {{method possibly missing a [super dealloc] call}}
@end
