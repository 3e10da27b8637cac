#include <Foundation/Foundation.h>

NSString* text(CFDataRef data) {
    return (NSString*)data; // expected-warning {{bridges to NSData, not 'NSString'}}
}
