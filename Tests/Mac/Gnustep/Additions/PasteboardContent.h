#pragma once

#import <AppKit/NSPasteboard.h>

/// Stores a pasteboard's content with GNUstep's server, which supports neither items nor messages of more
/// than 32 MiB. The first value of each type is stored under that type, as any GNUstep program does.
///
/// An item is an array: its types in order, each followed by its data, or by an empty string if the data are
/// those stored under the type.
///
/// Every method raises NSPasteboardCommunicationException if the server does not answer.
@interface NSPasteboard (TavelContent)

/// Starts a new content that declares the types, without data. Returns its change count.
- (int)startContentWithTypes:(NSArray*)types owner:(id)owner;

/// Whether this program started the current content.
- (BOOL)isContentOurs;

/// The items, as mutable arrays.
- (NSMutableArray*)storedItems;

/// The data stored under the type.
- (NSData*)storedDataForType:(NSString*)type;

/// Both return NO if another program has started a new content.
- (BOOL)storeData:(NSData*)data forType:(NSString*)type;
- (BOOL)storeItems:(NSArray*)items;

/// Starts a new content with the data of the current one, except those stored under the types in `left`, and
/// declares further types. Returns its change count, or 0 if there is no content.
- (int)continueContentWithTypes:(NSArray*)types without:(NSArray*)left owner:(id)owner;

@end
