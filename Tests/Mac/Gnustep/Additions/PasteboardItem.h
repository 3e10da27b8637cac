#pragma once

#import <AppKit/NSPasteboardItem.h>

/// An item that lists and returns its data. GNUstep's does neither.
@interface NSPasteboardItem (TavelAdditions)

/// Binds the item to a pasteboard, so that it cannot be written again.
- (void)becomeWritten;

@end
