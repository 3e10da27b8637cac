#pragma once

#import <AppKit/NSPasteboard.h>
#import <AppKit/NSPasteboardItem.h>

/// What GNUstep's pasteboard does not have, or does in another way, with the behaviour that Apple documents.
/// The data lie with GNUstep's pasteboard server, where other programs find them.
///
/// - A value may be written only after this program cleared the pasteboard or added types to it, and until
///   another one does.
/// - A type need not be declared before it is written.
/// - Texts are stored in UTF-8.
/// - There may be several items.

APPKIT_EXPORT NSString* const NSPasteboardURLReadingFileURLsOnlyKey;

@interface NSPasteboard (TavelAdditions)

- (NSInteger)clearContents;

/// YES if all were added. Raises NSInvalidArgumentException for a pasteboard item that was written before.
- (BOOL)writeObjects:(NSArray*)objects;

/// Knows of one class, NSURL, and of the option above. An item without a URL gives nothing.
- (NSArray*)readObjectsForClasses:(NSArray*)classes options:(NSDictionary*)options;

@end
