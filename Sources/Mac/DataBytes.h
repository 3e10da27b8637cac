#pragma once

#include "Support/Bytes.h"

#import <Foundation/Foundation.h>

namespace tavel {

/// The same bytes as a data object, autoreleased. Nothing is copied: the object keeps the buffer alive.
NSData* dataSharing(const Bytes& bytes) NS_RETURNS_NOT_RETAINED;

/// The same bytes. Nothing is copied: they keep the object alive, which must not be mutable.
Bytes bytesSharing(NSData* data);

} // namespace tavel
