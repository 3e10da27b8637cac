#include "Linux/Store/ContentFile.h"

#include "Tests/Support/TestDirectory.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>

namespace tavel {

namespace {

constexpr std::uint64_t headerBytes = 24;

std::string entry(std::uint32_t item, std::uint32_t typeBytes, std::uint64_t dataBytes,
                  std::string_view type) {
    std::string bytes(16, '\0');
    std::memcpy(bytes.data(), &item, 4);
    std::memcpy(bytes.data() + 4, &typeBytes, 4);
    std::memcpy(bytes.data() + 8, &dataBytes, 8);
    return bytes + std::string(type);
}

bool isTable(const std::string& table, std::uint64_t dataBytes) {
    return parseContentTable(table, headerBytes + table.size() + dataBytes).has_value();
}

} // namespace

TEST(ContentTable, namesTypesAndPlaces) {
    const std::string table = entry(0, 1, 5, "a") + entry(0, 2, 0, "bc") + entry(3, 0, 7, "");
    const auto entries = parseContentTable(table, headerBytes + table.size() + 12);
    ASSERT_TRUE(entries);
    ASSERT_EQ(entries->size(), 3U);
    const std::uint64_t begin = headerBytes + table.size();
    EXPECT_EQ((*entries)[0].type, "a");
    EXPECT_EQ((*entries)[0].offset, begin);
    EXPECT_EQ((*entries)[1].type, "bc");
    EXPECT_EQ((*entries)[1].size, 0U);
    EXPECT_EQ((*entries)[2].item, 3U);
    EXPECT_EQ((*entries)[2].offset, begin + 5);
    EXPECT_EQ((*entries)[2].size, 7U);
    EXPECT_TRUE(parseContentTable("", headerBytes)->empty());
}

TEST(ContentTable, isRefusedWithAnyLengthThatDoesNotFit) {
    EXPECT_TRUE(isTable(entry(0, 1, 5, "a"), 5));
    EXPECT_FALSE(isTable(entry(0, 1, 5, "a"), 4));
    EXPECT_FALSE(isTable(entry(0, 1, 5, "a"), 6));
    EXPECT_FALSE(isTable(entry(0, 2, 5, "a"), 5)) << "the type is longer than the table";
    EXPECT_FALSE(isTable(entry(0, ~0U, 5, "a"), 5));
    EXPECT_FALSE(isTable(entry(0, 1, ~std::uint64_t{0}, "a"), 5));
    EXPECT_FALSE(isTable(entry(0, 1, ~std::uint64_t{0} - 40, "a") + entry(0, 1, 45, "a"), 5))
        << "the sum is beyond the numbers";
    EXPECT_FALSE(isTable(entry(1, 1, 0, "a") + entry(0, 1, 0, "a"), 0)) << "items come in order";
    for (std::size_t cut = 1; cut < 16; ++cut)
        EXPECT_FALSE(isTable(entry(0, 0, 0, "").substr(cut), 0)) << cut;
}

TEST(ContentTable, hasALimit) {
    const auto headWith = [](std::size_t typeBytes) {
        const PasteboardItem item{{std::string(typeBytes, 't'), Bytes()}};
        return contentFileHead({&item, 1});
    };
    EXPECT_TRUE(headWith(maximumTableBytes - 16));
    EXPECT_FALSE(headWith(maximumTableBytes - 15));

    const TestDirectory scratch;
    const auto isRead = [&](std::size_t typeBytes) {
        const std::string table =
            entry(0, static_cast<std::uint32_t>(typeBytes), 0, std::string(typeBytes, 't'));
        std::string head("tavel-2\0", 8);
        for (const std::uint64_t number : {headerBytes + table.size(), std::uint64_t{table.size()}})
            head.append(reinterpret_cast<const char*>(&number), sizeof number);
        const auto path = scratch.createFile("content", head + table);
        return ContentFile::read(open(path.c_str(), O_RDONLY | O_CLOEXEC)).has_value();
    };
    EXPECT_TRUE(isRead(maximumTableBytes - 16));
    EXPECT_FALSE(isRead(maximumTableBytes - 15));
}

} // namespace tavel
