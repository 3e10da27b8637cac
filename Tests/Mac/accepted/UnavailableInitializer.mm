#include <AppKit/AppKit.h>

NSLocale* someLocale() {
    return [[[NSLocale alloc] initWithLocaleIdentifier:@"fr_FR"] autorelease];
}
