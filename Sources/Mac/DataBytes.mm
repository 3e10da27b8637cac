#include "Mac/DataBytes.h"

#include <memory>

/// A data object over a buffer of ours. A class of our own, because Foundation tells of an object's end only
/// through a block, which not every compiler of these files has.
@interface TavelSharedData : NSData {
    const tavel::Bytes* _sharedBytes; // owned
}
/// What an initialiser would do. The superclass has none that leaves an object of a subclass as it is, on
/// every system.
- (void)share:(const tavel::Bytes&)bytes;
@end

@implementation TavelSharedData

- (void)share:(const tavel::Bytes&)bytes {
    _sharedBytes = new tavel::Bytes(bytes);
}

- (void)dealloc {
    delete _sharedBytes;
    [super dealloc];
}

- (const void*)bytes {
    return _sharedBytes->data();
}

- (NSUInteger)length {
    return _sharedBytes->size();
}

// What never changes needs no copy.
- (id)copyWithZone:(NSZone*)zone {
    (void)zone;
    return [self retain];
}

@end

namespace tavel {

NSData* dataSharing(const Bytes& bytes) {
    TavelSharedData* const data = [[TavelSharedData alloc] autorelease];
    [data share:bytes];
    return data;
}

Bytes bytesSharing(NSData* data) {
    const std::shared_ptr<const void> owner([data retain], [](NSData* retained) { [retained release]; });
    return {owner, static_cast<const char*>([data bytes]), [data length]};
}

} // namespace tavel
