#include <AppKit/AppKit.h>

NSUInteger length() {
    NSString* const text = [[NSString alloc] initWithUTF8String:"text"];
    return [text length]; // expected-warning {{Potential leak of an object stored into 'text'}}
}
