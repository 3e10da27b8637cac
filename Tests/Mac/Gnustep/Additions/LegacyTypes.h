#pragma once

#import <Foundation/Foundation.h>

/// The names that macOS lists after a type for programs from before uniform type identifiers; none for a type
/// that has no such name.
NSArray* legacyNamesOf(NSString* type);
