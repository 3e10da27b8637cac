#include "Tests/Mac/Gnustep/Additions/LegacyTypes.h"

namespace {

NSArray* names(NSString* name) {
    return [NSArray arrayWithObject:name];
}

} // namespace

NSArray* legacyNamesOf(NSString* type) {
    static NSDictionary* const known = [[NSDictionary alloc]
        initWithObjectsAndKeys:names(@"NSStringPboardType"), @"public.utf8-plain-text",
                               names(@"Apple PNG pasteboard type"), @"public.png",
                               names(@"NeXT TIFF v4.0 pasteboard type"), @"public.tiff",
                               names(@"NeXT Rich Text Format v1.0 pasteboard type"), @"public.rtf",
                               names(@"Apple HTML pasteboard type"), @"public.html",
                               names(@"Apple PDF pasteboard type"), @"com.adobe.pdf",
                               names(@"Apple URL pasteboard type"), @"public.url",
                               [NSArray arrayWithObjects:@"CorePasteboardFlavorType 0x6675726C",
                                                         @"NSFilenamesPboardType", nil],
                               @"public.file-url", nil];
    NSArray* const found = [known objectForKey:type];
    return found == nil ? [NSArray array] : found;
}
