#include "Tests/Mac/Gnustep/Additions/PasteboardContent.h"

#import <Foundation/Foundation.h>
#import <GNUstepGUI/GSPasteboardServer.h>

#include <utility>

namespace {

constexpr NSTimeInterval replyTimeout = 60; // GNUstep's own 2 s are too short on a busy machine

// Below the 32 MiB that a message can hold.
constexpr NSUInteger partSize = NSUInteger{16} * 1024 * 1024;

NSString* const itemsType = @"TavelPasteboardItems";
NSString* const partPrefix = @"TavelPasteboardPart ";

BOOL isOfOurOwn(NSString* type) {
    return [type isEqualToString:itemsType] || [type hasPrefix:partPrefix];
}

/// The type under which the part with that number is stored.
NSString* typeOfPart(NSString* type, NSUInteger number) {
    return number == 0 ? type
                       : [NSString stringWithFormat:@"%@%lu %@", partPrefix,
                                                    static_cast<unsigned long>(number), type];
}

/// The change count of the content that this program started last, by pasteboard name.
NSMutableDictionary* startedContents() {
    static NSMutableDictionary* const counts = [[NSMutableDictionary alloc] init];
    return counts;
}

template <typename Action>
auto communicating(Action&& action) {
    @try {
        return std::forward<Action>(action)();
    } @catch (NSException* exception) {
        // A broken connection raises other exceptions, too. Callers expect this one.
        [NSException raise:NSPasteboardCommunicationException format:@"%@", [exception reason]];
        __builtin_unreachable();
    }
}

} // namespace

@implementation NSPasteboard (TavelContent)

- (id<GSPasteboardObj>)server {
    [[static_cast<NSDistantObject*>(target) connectionForProxy] setReplyTimeout:replyTimeout];
    return target;
}

- (int)startContentWithTypes:(NSArray*)types owner:(id)newOwner {
    return communicating([&] {
        const int count = [[self server] declareTypes:types owner:newOwner pasteboard:self];
        [startedContents() setObject:[NSNumber numberWithInt:count] forKey:name];
        return count;
    });
}

- (int)startedCount {
    return [[startedContents() objectForKey:name] intValue];
}

- (BOOL)isContentOurs {
    return communicating([&]() -> BOOL {
        const int started = [self startedCount];
        return started != 0 && [[self server] changeCount] == started;
    });
}

- (NSArray*)storedTypes {
    int current = 0;
    // A proxy of the server's array, which does not support fast enumeration.
    NSArray* const there = [[self server] typesAndChangeCount:&current];
    const NSUInteger count = [there count];
    NSMutableArray* const types = [NSMutableArray arrayWithCapacity:count];
    for (NSUInteger i = 0; i < count; ++i)
        [types addObject:[there objectAtIndex:i]];
    return types;
}

- (NSMutableArray*)storedItems {
    return communicating([&]() -> NSMutableArray* {
        NSArray* const types = [self storedTypes];
        if ([types containsObject:itemsType])
            return [NSPropertyListSerialization propertyListFromData:[self storedDataForType:itemsType]
                                                    mutabilityOption:NSPropertyListMutableContainers
                                                              format:nullptr
                                                    errorDescription:nullptr];
        NSMutableArray* const item = [NSMutableArray array];
        for (NSString* type in types) {
            if (!isOfOurOwn(type))
                [item addObjectsFromArray:[NSArray arrayWithObjects:type, @"", nil]];
        }
        return [item count] == 0 ? [NSMutableArray array] : [NSMutableArray arrayWithObject:item];
    });
}

- (NSData*)storedPart:(NSUInteger)number ofType:(NSString*)type {
    return [[self server] dataForType:typeOfPart(type, number) oldCount:0 mustBeCurrent:YES];
}

- (NSData*)storedDataForType:(NSString*)type {
    return communicating([&]() -> NSData* {
        NSData* const first = [self storedPart:0 ofType:type];
        if ([first length] != partSize)
            return first;
        NSMutableData* const data = [NSMutableData dataWithData:first];
        // The last part is shorter than all others, possibly empty.
        for (NSUInteger number = 1;[data length] == number * partSize; ++number) {
            @autoreleasepool {
                [data appendData:[self storedPart:number ofType:type]];
            }
        }
        return data;
    });
}

- (BOOL)storeData:(NSData*)data forType:(NSString*)type {
    return communicating([&]() -> BOOL {
        const int count = [self startedCount];
        for (NSUInteger number = 0; number * partSize <= [data length]; ++number) {
            @autoreleasepool {
                NSString* const stored = typeOfPart(type, number);
                const NSUInteger offset = number * partSize;
                // A plain NSData: the server does not know every subclass.
                NSData* const part = [NSData dataWithBytes:static_cast<const char*>([data bytes]) + offset
                                                    length:MIN([data length] - offset, partSize)];
                if ([[self server] addTypes:[NSArray arrayWithObject:stored]
                                      owner:nil
                                 pasteboard:self
                                   oldCount:count] == 0 ||
                    ![[self server] setData:part forType:stored isFile:NO oldCount:count])
                    return NO;
            }
        }
        return YES;
    });
}

- (BOOL)storeItems:(NSArray*)items {
    return [self storeData:[NSPropertyListSerialization dataFromPropertyList:items
                                                                      format:NSPropertyListGNUstepBinaryFormat
                                                            errorDescription:nullptr]
                   forType:itemsType];
}

- (int)continueContentWithTypes:(NSArray*)types without:(NSArray*)left owner:(id)newOwner {
    return communicating([&] {
        NSArray* const stored = [self storedTypes];
        if ([stored count] == 0)
            return 0;
        NSMutableArray* const data = [NSMutableArray array];
        for (NSString* type in stored) {
            NSData* const found = [left containsObject:type]
                                      ? nil
                                      : [[self server] dataForType:type oldCount:0 mustBeCurrent:YES];
            [data addObject:found == nil ? static_cast<id>([NSNull null]) : found];
        }
        NSMutableArray* const all = [NSMutableArray arrayWithArray:stored];
        for (NSString* type in types) {
            if (![all containsObject:type])
                [all addObject:type];
        }
        const int count = [self startContentWithTypes:all owner:newOwner];
        for (NSUInteger i = 0; i < [data count]; ++i) {
            if ([data objectAtIndex:i] != [NSNull null])
                [[self server] setData:[data objectAtIndex:i]
                               forType:[stored objectAtIndex:i]
                                isFile:NO
                              oldCount:count];
        }
        return count;
    });
}

@end
