#pragma once

#import <AppKit/NSPasteboard.h>

/// How the content of a pasteboard lies with GNUstep's server, which knows neither items nor messages of more
/// than 32 MiB. The first value of each type lies under that type, as in the content of any GNUstep program.
///
/// An item is an array of its types in order, each followed by its data, or by an empty string if that is
/// what lies under the type.
///
/// Everything raises NSPasteboardCommunicationException if the server does not answer.
@interface NSPasteboard (TavelContent)

/// Starts a new content, empty but for the types. Gives its change count.
- (int)startContentWithTypes:(NSArray*)types owner:(id)owner;

/// Whether the content is one that this program started.
- (BOOL)isContentOurs;

/// The items, in mutable arrays.
- (NSMutableArray*)storedItems;

/// What lies under the type.
- (NSData*)storedDataForType:(NSString*)type;

/// The first NO if another program started a content meanwhile.
- (BOOL)storeData:(NSData*)data forType:(NSString*)type;
- (BOOL)storeItems:(NSArray*)items;

/// A new content that has what this one has, without what lies under the types in `left`, with further
/// types. Gives its change count, or 0 if there is no content.
- (int)continueContentWithTypes:(NSArray*)types without:(NSArray*)left owner:(id)owner;

@end
