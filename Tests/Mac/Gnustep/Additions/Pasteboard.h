#pragma once

#import <AppKit/NSPasteboard.h>
#import <AppKit/NSPasteboardItem.h>

/// Methods that GNUstep's pasteboard lacks or implements differently, with the behaviour that Apple
/// documents. GNUstep's pasteboard server stores the data, so other programs can read them.
///
/// - A program may write values once it has cleared the pasteboard or added types to it, until another
///   program does.
/// - A type need not be declared before it is written.
/// - Texts are stored in UTF-8.
/// - A pasteboard may hold several items.
/// - The list of types names some types a second time, for old programs.

APPKIT_EXPORT NSString* const NSPasteboardURLReadingFileURLsOnlyKey;

enum NSPasteboardAccessBehavior : NSInteger {
    NSPasteboardAccessBehaviorDefault = 0,
    NSPasteboardAccessBehaviorAsk = 1,
    NSPasteboardAccessBehaviorAlwaysAllow = 2,
    NSPasteboardAccessBehaviorAlwaysDeny = 3,
};

/// What the user has chosen for this program and all pasteboards; for tests. The default at first. If it is
/// to deny, nothing can be read.
extern NSPasteboardAccessBehavior tavelAccessBehavior;

/// How often data were read, or would have been but for the user's choice; for tests.
extern NSUInteger tavelDataReads;

@interface NSPasteboard (TavelAdditions)

- (NSPasteboardAccessBehavior)accessBehavior;

- (NSInteger)clearContents;

/// Returns YES if all were added. Raises NSInvalidArgumentException for a pasteboard item that was written
/// before.
- (BOOL)writeObjects:(NSArray*)objects;

/// Supports the class NSURL and the option above only. Skips items without a URL.
- (NSArray*)readObjectsForClasses:(NSArray*)classes options:(NSDictionary*)options;

@end

@interface NSURL (TavelAdditions)
+ (NSArray*)readableTypesForPasteboard:(NSPasteboard*)pasteboard;
@end
