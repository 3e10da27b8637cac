#include <AppKit/AppKit.h>

NSArray<NSString*>* pathOf(NSURL* url) {
    NSString* const path = [url path];
    if (path != nil)
        return @[ path ];
    return @[ path ]; // expected-warning {{Array element cannot be nil}}
}
