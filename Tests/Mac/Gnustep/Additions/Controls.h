#pragma once

#import <AppKit/NSButton.h>
#import <AppKit/NSTextField.h>

/// The makers of controls that GNUstep does not have. They give what Apple documents for them.

@interface NSTextField (TavelAdditions)

/// A text on one line that is neither edited nor selected, in the system's font, as large as it needs.
+ (instancetype)labelWithString:(NSString*)string;

/// A text on several lines that can be selected but not edited, in the system's font.
+ (instancetype)wrappingLabelWithString:(NSString*)string;

/// A field for one line that the user edits.
+ (instancetype)textFieldWithString:(NSString*)string;

@end

@interface NSButton (TavelAdditions)

/// A push button with a title, as large as it needs.
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;

@end
