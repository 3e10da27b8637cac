#pragma once

#import <AppKit/NSButton.h>
#import <AppKit/NSTextField.h>

/// Convenience constructors that GNUstep lacks, with the behaviour that Apple documents.

@interface NSTextField (TavelAdditions)

/// A single-line label in the system font, sized to fit, neither editable nor selectable.
+ (instancetype)labelWithString:(NSString*)string;

/// A wrapping label in the system font, selectable but not editable.
+ (instancetype)wrappingLabelWithString:(NSString*)string;

/// A single-line editable text field.
+ (instancetype)textFieldWithString:(NSString*)string;

@end

@interface NSButton (TavelAdditions)

/// A push button with a title, sized to fit.
+ (instancetype)buttonWithTitle:(NSString*)title target:(id)target action:(SEL)action;

@end
