#include "Tests/Mac/Double/CoreData.h"

#include <cstdlib>

using namespace tavel::doubles;

namespace tavel::doubles {

Data::~Data() {
    if (freesLent)
        std::free(const_cast<UInt8*>(lent));
}

} // namespace tavel::doubles

CFDataRef CFDataCreateWithBytesNoCopy(CFAllocatorRef, const UInt8* bytes, CFIndex size,
                                      CFAllocatorRef bytesDeallocator) {
    auto& data = *new Data;
    data.lent = bytes;
    data.lentSize = size;
    data.freesLent = bytesDeallocator != kCFAllocatorNull;
    return refTo<CFDataRef>(data);
}

CFMutableDataRef CFDataCreateMutable(CFAllocatorRef, CFIndex capacity) {
    if (capacity != 0)
        refuse("Data that cannot grow is not made here.");
    return refTo<CFMutableDataRef>(*new Data);
}

CFIndex CFDataGetLength(CFDataRef data) {
    return objectAt<Data>(data).size();
}

const UInt8* CFDataGetBytePtr(CFDataRef data) {
    return objectAt<Data>(data).bytes();
}
