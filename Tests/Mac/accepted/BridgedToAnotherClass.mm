#include <Foundation/Foundation.h>

NSData* bytes(CFDataRef data) {
    return (NSData*)data;
}
