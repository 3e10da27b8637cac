#include "Mac/DataBytes.h"

#include <memory>

/// A data object over one of our buffers. A class of our own: Foundation reports that shared bytes are no
/// longer needed only to a block, and the build with GNUstep has no blocks.
@interface TavelSharedData : NSData {
    const tavel::Bytes* _sharedBytes; // owned
}
/// Takes the place of an initialiser: NSData has none that keeps an instance of a subclass on every system.
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

// Immutable, so another reference serves as a copy.
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
