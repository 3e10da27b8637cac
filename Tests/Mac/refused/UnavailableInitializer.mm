#include <AppKit/AppKit.h>

NSLocale* someLocale() {
    return [[[NSLocale alloc] init] autorelease]; // expected-error {{'init' is unavailable}}
}
