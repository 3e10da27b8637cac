#pragma once

#include "Support/Bytes.h"

#import <Foundation/Foundation.h>

namespace tavel {

/// The bytes as a data object, autoreleased. It shares their buffer and keeps it alive; nothing is copied.
NSData* dataSharing(const Bytes& bytes) NS_RETURNS_NOT_RETAINED;

/// The bytes of a data object, which must not be mutable. They share its buffer and keep the object alive;
/// nothing is copied.
Bytes bytesSharing(NSData* data);

} // namespace tavel
