#import <Foundation/Foundation.h>

namespace {

bool isByteOrderMark(unichar unit) {
    return unit == 0xFEFF || unit == 0xFFFE;
}

} // namespace

/// GNUstep removes a byte-order mark at the beginning of the characters. Apple's strings keep all characters
/// that they are given.
@interface NSString (TavelAdditions)
@end

@implementation NSString (TavelAdditions)

- (instancetype)initWithCharacters:(const unichar*)characters length:(NSUInteger)length {
    if (length == 0 || !isByteOrderMark(characters[0]))
        return [self initWithBytes:characters
                            length:length * sizeof(unichar)
                          encoding:NSUnicodeStringEncoding];
    NSMutableString* const behindLetter = [NSMutableString stringWithString:@"x"];
    for (; length != 0 && isByteOrderMark(*characters); ++characters, --length)
        [behindLetter appendFormat:@"%C", *characters];
    [behindLetter appendString:[NSString stringWithCharacters:characters length:length]];
    [behindLetter deleteCharactersInRange:NSMakeRange(0, 1)];
    return [self initWithString:behindLetter];
}

@end
