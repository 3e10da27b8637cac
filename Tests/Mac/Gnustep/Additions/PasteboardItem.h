#pragma once

#import <AppKit/NSPasteboardItem.h>

/// GNUstep's item neither lists what it is given nor hands it out.
@interface NSPasteboardItem (TavelAdditions)

/// From now on it is bound to a pasteboard and cannot be written again.
- (void)becomeWritten;

@end
