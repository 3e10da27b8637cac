#include <AppKit/AppKit.h>

NSUInteger length() {
    NSString* const text = [[NSString alloc] initWithUTF8String:"text"];
    [text release];
    return [text length]; // expected-warning {{Reference-counted object is used after it is released}}
}
