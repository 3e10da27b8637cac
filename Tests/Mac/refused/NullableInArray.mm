#include <AppKit/AppKit.h>

NSArray<NSString*>* pathOf(NSURL* url) {
    return [NSArray arrayWithObject:[url path]];
    // expected-warning@-1 2 {{implicit conversion from nullable pointer}}
    // expected-warning@-2 {{Nullable pointer is passed to a callee that requires a non-null}}
}
