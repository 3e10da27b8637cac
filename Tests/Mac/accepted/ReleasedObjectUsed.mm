#include <AppKit/AppKit.h>

NSUInteger length() {
    NSString* const text = [[[NSString alloc] initWithUTF8String:"text"] autorelease];
    return [text length];
}
