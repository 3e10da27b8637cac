#include <Foundation/Foundation.h>

NSString* greeting() NS_RETURNS_NOT_RETAINED;

NSString* greeting() {
    return [[[NSString alloc] initWithUTF8String:"Bonjour"] autorelease];
}
