#include "Tests/Mac/Gnustep/Additions/Pasteboard.h"

#include "Mac/Strings.h"
#include "Tests/Mac/Gnustep/Additions/LegacyTypes.h"
#include "Tests/Mac/Gnustep/Additions/PasteboardContent.h"
#include "Tests/Mac/Gnustep/Additions/PasteboardItem.h"

NSString* const NSPasteboardURLReadingFileURLsOnlyKey = @"NSPasteboardURLReadingFileURLsOnlyKey";

NSPasteboardAccessBehavior tavelAccessBehavior = NSPasteboardAccessBehaviorDefault;
NSUInteger tavelDataReads = 0;

namespace {

BOOL mayRead() {
    ++tavelDataReads;
    return tavelAccessBehavior != NSPasteboardAccessBehaviorAlwaysDeny;
}

NSString* const plainText = @"public.utf8-plain-text";

/// For these types the system joins the texts of all items.
BOOL isJoined(NSString* type) {
    return [[NSArray arrayWithObjects:plainText, @"public.rtf", @"com.apple.flat-rtfd", nil]
        containsObject:type];
}

NSData* utf8Data(NSString* string) {
    const auto text = tavel::utf8FromString(string);
    return text ? [NSData dataWithBytes:text->data() length:text->size()] : nil;
}

NSString* stringOf(NSData* data) {
    return data == nil ? nil : tavel::stringFromUtf8({static_cast<const char*>([data bytes]), [data length]});
}

/// The item's data, or the empty string that stands for the data stored under the type; nil without the type.
id valueIn(NSArray* item, NSString* type) {
    for (NSUInteger i = 0; i < [item count]; i += 2) {
        if ([[item objectAtIndex:i] isEqualToString:type])
            return [item objectAtIndex:i + 1];
    }
    return nil;
}

BOOL isStoredUnderItsType(id value) {
    return [value isKindOfClass:[NSString class]];
}

/// Makes the first item own the data stored under the type. Returns the item that owned them before, if it
/// was another one.
NSMutableArray* giveToTheFirst(NSMutableArray* items, NSString* type) {
    NSMutableArray* const first = [items objectAtIndex:0];
    if (valueIn(first, type) != nil)
        return nil;
    [first addObjectsFromArray:[NSArray arrayWithObjects:type, @"", nil]];
    for (NSUInteger i = 1; i < [items count]; ++i) {
        if (isStoredUnderItsType(valueIn([items objectAtIndex:i], type)))
            return [items objectAtIndex:i];
    }
    return nil;
}

void setValue(NSMutableArray* item, NSString* type, NSData* data) {
    for (NSUInteger i = 0; i < [item count]; i += 2) {
        if ([[item objectAtIndex:i] isEqualToString:type])
            [item replaceObjectAtIndex:i + 1 withObject:data];
    }
}

/// The object as an item with all its data; nil if data are missing for a type that it names.
NSMutableArray* itemOf(id<NSPasteboardWriting> object, NSPasteboard* pasteboard) {
    NSMutableArray* const item = [NSMutableArray array];
    for (NSString* type in [object writableTypesForPasteboard:pasteboard]) {
        id value = [object pasteboardPropertyListForType:type];
        if ([value isKindOfClass:[NSString class]])
            value = utf8Data(value);
        if (![value isKindOfClass:[NSData class]])
            return nil;
        [item addObjectsFromArray:[NSArray arrayWithObjects:type, value, nil]];
    }
    return item;
}

NSOrderedSet* typesOf(NSArray* items) {
    NSMutableOrderedSet* const types = [NSMutableOrderedSet orderedSet];
    for (NSArray* item in items) {
        for (NSUInteger i = 0; i < [item count]; i += 2)
            [types addObject:[item objectAtIndex:i]];
    }
    return types;
}

} // namespace

@implementation NSURL (TavelAdditions)

+ (NSArray*)readableTypesForPasteboard:(NSPasteboard*)pasteboard {
    static_cast<void>(pasteboard);
    return [NSArray arrayWithObjects:@"public.file-url", @"public.url", nil];
}

@end

@implementation NSPasteboard (TavelAdditions)

- (NSPasteboardAccessBehavior)accessBehavior {
    return tavelAccessBehavior;
}

- (NSInteger)clearContents {
    return [self startContentWithTypes:[NSArray array] owner:nil];
}

- (int)addTypes:(NSArray*)types owner:(id)newOwner {
    NSMutableArray* const items = [self storedItems];
    const BOOL severalItems = [items count] > 1;
    NSMutableArray* const taken = [NSMutableArray array];
    if (severalItems) {
        for (NSString* type in types) {
            NSMutableArray* const other = giveToTheFirst(items, type);
            if (other != nil) {
                setValue(other, type, [self storedDataForType:type]);
                [taken addObject:type];
            }
        }
    }
    const int count = [self continueContentWithTypes:types without:taken owner:newOwner];
    return count != 0 && severalItems && ![self storeItems:items] ? 0 : count;
}

- (BOOL)setData:(NSData*)data forType:(NSString*)type {
    if (![self isContentOurs])
        return NO;
    NSMutableArray* const items = [self storedItems];
    if ([items count] > 1) {
        NSMutableArray* const other = giveToTheFirst(items, type);
        if (other != nil)
            setValue(other, type, [self storedDataForType:type]);
        if (![self storeItems:items])
            return NO;
    }
    return [self storeData:data forType:type];
}

- (BOOL)setString:(NSString*)string forType:(NSString*)type {
    NSData* const data = utf8Data(string);
    return data != nil && [self setData:data forType:type];
}

- (BOOL)writeObjects:(NSArray*)objects {
    if (![self isContentOurs])
        return NO;
    NSMutableArray* const items = [self storedItems];
    NSMutableSet* const known = [NSMutableSet setWithArray:[typesOf(items) array]];
    NSMutableDictionary* const firstOfTheirTypes = [NSMutableDictionary dictionary];
    for (id<NSPasteboardWriting> object in objects) {
        NSMutableArray* const item = itemOf(object, self);
        if (item == nil)
            return NO;
        for (NSUInteger i = 0; i < [item count]; i += 2) {
            NSString* const type = [item objectAtIndex:i];
            if ([known containsObject:type])
                continue;
            [known addObject:type];
            [firstOfTheirTypes setObject:[item objectAtIndex:i + 1] forKey:type];
            [item replaceObjectAtIndex:i + 1 withObject:@""];
        }
        [items addObject:item];
    }
    if ([items count] > 1 && ![self storeItems:items])
        return NO;
    for (NSString* type in typesOf(items)) {
        NSData* const data = [firstOfTheirTypes objectForKey:type];
        if (data != nil && ![self storeData:data forType:type])
            return NO;
    }
    for (id object in objects) {
        if ([object isKindOfClass:[NSPasteboardItem class]])
            [object becomeWritten];
    }
    return YES;
}

- (NSArray*)types {
    NSMutableOrderedSet* const types = [NSMutableOrderedSet orderedSet];
    for (NSString* type in typesOf([self storedItems])) {
        [types addObject:type];
        [types addObjectsFromArray:legacyNamesOf(type)];
    }
    return [types array];
}

- (NSData*)dataForType:(NSString*)type {
    return mayRead() ? [self storedDataForType:type] : nil;
}

- (NSString*)stringForType:(NSString*)type {
    if (!mayRead())
        return nil;
    if (!isJoined(type))
        return stringOf([self storedDataForType:type]);
    NSMutableArray* const texts = [NSMutableArray array];
    for (NSArray* item in [self storedItems]) {
        const id value = valueIn(item, type);
        NSString* const text = stringOf(isStoredUnderItsType(value) ? [self storedDataForType:type] : value);
        if (text != nil)
            [texts addObject:text];
    }
    return [texts count] == 0 ? nil : [texts componentsJoinedByString:@"\n"];
}

- (NSArray*)readObjectsForClasses:(NSArray*)classes options:(NSDictionary*)options {
    NSMutableArray* const found = [NSMutableArray array];
    if (![classes containsObject:[NSURL class]] || !mayRead())
        return found;
    const BOOL filesOnly = [[options objectForKey:NSPasteboardURLReadingFileURLsOnlyKey] boolValue];
    for (NSArray* item in [self storedItems]) {
        for (NSString* type in [NSURL readableTypesForPasteboard:self]) {
            const id value = valueIn(item, type);
            NSString* const text =
                stringOf(isStoredUnderItsType(value) ? [self storedDataForType:type] : value);
            NSURL* const url = [text length] == 0 ? nil : [NSURL URLWithString:text];
            if (url == nil || (filesOnly && ![url isFileURL]))
                continue;
            [found addObject:url];
            break;
        }
    }
    return found;
}

@end
