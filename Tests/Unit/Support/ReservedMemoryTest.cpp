#include "Support/ReservedMemory.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace tavel {
namespace {

const auto pageBytes = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));

/// Whether the page at this address is the process's. msync(2) fails where it has none.
bool isMapped(char* page) {
    return msync(page, pageBytes, MS_ASYNC) == 0;
}

TEST(ReservedMemory, hasRoomForItsWholeSize) {
    for (const std::size_t size : {std::size_t{1}, pageBytes, pageBytes + 1, std::size_t{5'000'000}}) {
        ReservedMemory memory(size);
        std::memset(memory.bytes(), 'x', size);
        EXPECT_EQ(memory.bytes()[size - 1], 'x');
    }
}

TEST(ReservedMemory, givesBackWhatItDoesNotNeedAndKeepsTheRestInPlace) {
    ReservedMemory memory(pageBytes * 10);
    char* const bytes = memory.bytes();
    std::memset(bytes, 'x', pageBytes * 10);
    memory.shrink(pageBytes * 3 + 1);
    EXPECT_EQ(memory.bytes(), bytes);
    EXPECT_EQ(bytes[pageBytes * 3], 'x');
    EXPECT_TRUE(isMapped(bytes + pageBytes * 3));
    EXPECT_FALSE(isMapped(bytes + pageBytes * 4));
}

TEST(ReservedMemory, givesEverythingBackAtItsEnd) {
    auto memory = std::make_unique<ReservedMemory>(pageBytes * 4);
    char* const bytes = memory->bytes();
    EXPECT_TRUE(isMapped(bytes));
    memory.reset();
    EXPECT_FALSE(isMapped(bytes));
}

TEST(ReservedMemory, throwsWhenThereAreNotSoManyAddresses) {
    EXPECT_THROW(ReservedMemory(SIZE_MAX / 2), std::bad_alloc);
}

} // namespace
} // namespace tavel
