#pragma once

#include "objc/NSObject.h"

@interface NSAutoreleasePool : NSObject
- (void)drain;
@end
