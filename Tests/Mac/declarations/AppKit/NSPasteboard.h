#pragma once

#include "Foundation/Foundation.h"

NS_ASSUME_NONNULL_BEGIN

@class NSPasteboardItem;
@protocol NSPasteboardWriting;

typedef NSString* NSPasteboardType;
typedef NSString* NSPasteboardName;
typedef NSString* NSPasteboardReadingOptionKey;

OBJC_EXPORT const NSPasteboardType NSPasteboardTypeString;
OBJC_EXPORT const NSPasteboardReadingOptionKey NSPasteboardURLReadingFileURLsOnlyKey;

enum NSPasteboardAccessBehavior : NSInteger {
    NSPasteboardAccessBehaviorDefault = 0,
    NSPasteboardAccessBehaviorAsk = 1,
    NSPasteboardAccessBehaviorAlwaysAllow = 2,
    NSPasteboardAccessBehaviorAlwaysDeny = 3,
} API_AVAILABLE(macos(15.4));

@interface NSPasteboard : NSObject
@property(class, readonly, strong) NSPasteboard* generalPasteboard;
+ (NSPasteboard*)pasteboardWithName:(NSPasteboardName)name;
@property(readonly) NSInteger changeCount;
@property(readonly) NSPasteboardAccessBehavior accessBehavior API_AVAILABLE(macos(15.4));
- (NSInteger)clearContents;
- (oneway void)releaseGlobally;
- (BOOL)writeObjects:(NSArray<id<NSPasteboardWriting>>*)objects;
- (nullable NSArray*)readObjectsForClasses:(NSArray<Class>*)classes
                                   options:(nullable NSDictionary<NSPasteboardReadingOptionKey, id>*)options;
- (NSInteger)addTypes:(NSArray<NSPasteboardType>*)types owner:(nullable id)owner;
@property(nullable, readonly, copy) NSArray<NSPasteboardType>* types;
- (BOOL)setData:(nullable NSData*)data forType:(NSPasteboardType)type;
- (BOOL)setString:(NSString*)string forType:(NSPasteboardType)type;
- (nullable NSData*)dataForType:(NSPasteboardType)type;
- (nullable NSString*)stringForType:(NSPasteboardType)type;
@end

@protocol NSPasteboardWriting <NSObject>
@end

@protocol NSPasteboardReading <NSObject>
+ (NSArray<NSPasteboardType>*)readableTypesForPasteboard:(NSPasteboard*)pasteboard;
@end

@interface NSURL (NSPasteboardSupport) <NSPasteboardWriting, NSPasteboardReading>
@end

NS_ASSUME_NONNULL_END
