#include "Mac/DataBytes.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>

namespace tavel {
namespace {

/// Bytes of a buffer whose destruction a test can observe.
struct WatchedBuffer {
    std::shared_ptr<const std::string> text = std::make_shared<const std::string>("watched");
    std::weak_ptr<const std::string> life = text;

    Bytes take() {
        const std::shared_ptr<const std::string> owner = std::move(text);
        return {owner, owner->data(), owner->size()};
    }

    bool isThere() const { return !life.expired(); }
};

TEST(DataBytes, dataShareTheBufferOfBytes) {
    const Bytes bytes = Bytes::copyOf("some bytes");
    NSData* const data = dataSharing(bytes);
    EXPECT_EQ([data bytes], bytes.data());
    EXPECT_EQ([data length], bytes.size());
}

TEST(DataBytes, bytesShareTheBufferOfData) {
    NSData* const data = [NSData dataWithBytes:"some\0bytes" length:10];
    const Bytes bytes = bytesSharing(data);
    EXPECT_EQ(bytes.data(), [data bytes]);
    EXPECT_EQ(bytes.view(), std::string_view("some\0bytes", 10));
}

TEST(DataBytes, dataOutliveTheBytesTheyShare) {
    WatchedBuffer buffer;
    NSData* data = nil;
    @autoreleasepool {
        data = [dataSharing(buffer.take()) retain];
    }
    EXPECT_TRUE(buffer.isThere());
    if (buffer.isThere())
        EXPECT_EQ(std::string(static_cast<const char*>([data bytes]), [data length]), "watched");
    [data release];
    EXPECT_FALSE(buffer.isThere()) << "nothing keeps it for longer";
}

TEST(DataBytes, bytesOutliveTheDataTheyShare) {
    WatchedBuffer buffer;
    Bytes bytes;
    @autoreleasepool {
        bytes = bytesSharing(dataSharing(buffer.take()));
    }
    ASSERT_TRUE(buffer.isThere());
    EXPECT_EQ(bytes.view(), "watched");
    Bytes part = bytes.slice(2, 3);
    bytes = Bytes();
    EXPECT_EQ(part.view(), "tch");
    part = Bytes();
    EXPECT_FALSE(buffer.isThere());
}

TEST(DataBytes, bytesOfDataMayBeDroppedOnAnotherThread) {
    WatchedBuffer buffer;
    Bytes bytes;
    @autoreleasepool {
        bytes = bytesSharing(dataSharing(buffer.take()));
    }
    std::thread([dropped = std::move(bytes)] { EXPECT_EQ(dropped.view(), "watched"); }).join();
    EXPECT_FALSE(buffer.isThere());
}

TEST(DataBytes, dataBehaveLikeOtherData) {
    NSData* const data = dataSharing(Bytes::copyOf("some bytes"));
    NSData* const equal = [NSData dataWithBytes:"some bytes" length:10];
    EXPECT_TRUE([data isEqual:equal]);
    EXPECT_TRUE([equal isEqual:data]);
    EXPECT_TRUE([[data subdataWithRange:NSMakeRange(5, 5)] isEqual:[NSData dataWithBytes:"bytes" length:5]]);
    NSData* const copy = [[data copy] autorelease];
    EXPECT_EQ([copy bytes], [data bytes]) << "what never changes need not be copied";
    NSMutableData* const changed = [[data mutableCopy] autorelease];
    [changed appendBytes:"!" length:1];
    EXPECT_EQ([changed length], 11U);
    EXPECT_TRUE([data isEqual:equal]);
}

TEST(DataBytes, emptyBytesAreEmptyData) {
    EXPECT_EQ([dataSharing(Bytes()) length], 0U);
    EXPECT_TRUE([dataSharing(Bytes()) isEqual:[NSData data]]);
    EXPECT_TRUE(bytesSharing([NSData data]).empty());
}

} // namespace
} // namespace tavel
