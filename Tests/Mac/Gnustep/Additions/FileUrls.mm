#import <Foundation/Foundation.h>

/// macOS writes the names in a file URL in their decomposed form, which the file system takes for the same
/// names.
@interface NSURL (TavelAdditions)
@end

@implementation NSURL (TavelAdditions)

+ (id)fileURLWithPath:(NSString*)path {
    BOOL isDirectory = NO;
    [[NSFileManager defaultManager] fileExistsAtPath:path isDirectory:&isDirectory];
    return [[[NSURL alloc] initFileURLWithPath:[path decomposedStringWithCanonicalMapping]
                                   isDirectory:isDirectory] autorelease];
}

@end
