#include "Tests/Mac/Double/CoreData.h"

#include <cstdlib>

using namespace tavel::doubles;

namespace tavel::doubles {

Data::~Data() {
    if (freesBorrowed)
        std::free(const_cast<UInt8*>(borrowed));
}

} // namespace tavel::doubles

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef, const UInt8* bytes, CFIndex size,
                                      CFAllocatorRef bytesDeallocator) {
    auto& data = *new Data;
    data.borrowed = bytes;
    data.borrowedSize = size;
    data.freesBorrowed = bytesDeallocator != kCFAllocatorNull;
    return refTo<CFDataRef>(data);
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity) {
    if (capacity != 0)
        refuse("The double makes no data of a fixed capacity.");
    return refTo<CFMutableDataRef>(*new Data);
}

CFIndex CFDataGetLength(CFDataRef data) {
    return objectAt<Data>(data).size();
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return objectAt<Data>(data).bytes();
}
