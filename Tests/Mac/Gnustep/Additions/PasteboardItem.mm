#include "Tests/Mac/Gnustep/Additions/PasteboardItem.h"

#include "Mac/Strings.h"

#import <Foundation/Foundation.h>

namespace {

NSString* const written = @"written";

BOOL isOfTypeIdentifier(unichar unit) {
    return (unit >= 'A' && unit <= 'Z') || (unit >= 'a' && unit <= 'z') || (unit >= '0' && unit <= '9') ||
           unit == '-' || unit == '.' || unit > 0x7F;
}

BOOL isTypeIdentifier(NSString* type) {
    for (NSUInteger i = 0; i < [type length]; ++i) {
        if (!isOfTypeIdentifier([type characterAtIndex:i]))
            return NO;
    }
    return [type length] != 0;
}

} // namespace

@implementation NSPasteboardItem (TavelAdditions)

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
    if (data == nil || !isTypeIdentifier(type))
        return NO;
    if (![_types containsObject:type])
        [_types addObject:type];
    [_dataMap setObject:data forKey:type];
    return YES;
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
    const auto text = tavel::utf8FromString(string);
    return text && [self setData:[NSData dataWithBytes:text->data() length:text->size()] forType:type];
}

- (NSArray*)writableTypesForPasteboard:(NSPasteboard*)pasteboard {
    (void)pasteboard;
    if ([_providerMap objectForKey:written] != nil)
        [NSException raise:NSInvalidArgumentException format:@"The item is already on a pasteboard."];
    return _types;
}

- (id)pasteboardPropertyListForType:(NSString*)type {
    return [_dataMap objectForKey:type];
}

- (void)becomeWritten {
    [_providerMap setObject:_types forKey:written];
}

@end
