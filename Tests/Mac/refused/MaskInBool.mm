#include <AppKit/AppKit.h>

BOOL commandIsDown(NSEventModifierFlags flags) {
    return flags & NSEventModifierFlagCommand; // expected-warning {{implicit conversion from integral type}}
}
