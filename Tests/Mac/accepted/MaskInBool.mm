#include <AppKit/AppKit.h>

BOOL commandIsDown(NSEventModifierFlags flags) {
    return (flags & NSEventModifierFlagCommand) != 0;
}
