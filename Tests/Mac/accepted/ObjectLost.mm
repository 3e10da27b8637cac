#include <AppKit/AppKit.h>

NSUInteger length() {
    NSString* const text = [[NSString alloc] initWithUTF8String:"text"];
    const NSUInteger length = [text length];
    [text release];
    return length;
}
