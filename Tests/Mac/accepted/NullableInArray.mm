#include <AppKit/AppKit.h>

NSArray<NSString*>* pathOf(NSURL* url) {
    NSString* const path = [url path];
    return path == nil ? [NSArray array] : [NSArray arrayWithObject:path];
}
