#include "Support/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <string>

namespace tavel {
namespace {

/// Every errno there is, and some that are none.
constexpr int lastCode = 200;

using Codes = std::map<int, int>;

int codeOf(const Codes& codes, int code, int otherwise) {
    const auto found = codes.find(code);
    return found == codes.end() ? otherwise : found->second;
}

TEST(FileError, numbersFailuresOfReading) {
    const Codes codes{{ENOENT, 260}, {EPERM, 257}, {EACCES, 257}, {ENAMETOOLONG, 258}, {EFBIG, 263}};
    for (int code = -1; code <= lastCode; ++code)
        EXPECT_EQ(fileReadError(code, "/file").code(), codeOf(codes, code, 256)) << std::strerror(code);
}

TEST(FileError, numbersFailuresOfWriting) {
    const Codes codes{{ENOENT, 4},   {EPERM, 513},  {EACCES, 513}, {ENAMETOOLONG, 514},
                      {ENOSPC, 640}, {EDQUOT, 640}, {EROFS, 642},  {EEXIST, 516}};
    for (int code = -1; code <= lastCode; ++code)
        EXPECT_EQ(fileWriteError(code, "/file").code(), codeOf(codes, code, 512)) << std::strerror(code);
}

TEST(FileError, isInTheDomainOfTheHomePlatform) {
    for (const int code : {ENOENT, EIO}) {
        EXPECT_EQ(fileReadError(code, "/file").domain(), "NSCocoaErrorDomain");
        EXPECT_EQ(fileWriteError(code, "/file").domain(), "NSCocoaErrorDomain");
    }
}

TEST(FileError, describesTheFileAndWhatWentWrong) {
    for (const int code : {ENOENT, ENOSPC, EIO}) {
        const std::string expected = "/a directory/file: " + std::string(std::strerror(code));
        EXPECT_EQ(fileReadError(code, "/a directory/file").description(), expected);
        EXPECT_EQ(fileWriteError(code, "/a directory/file").description(), expected);
    }
    EXPECT_EQ(fileReadError(ENOENT, "").description(), ": " + std::string(std::strerror(ENOENT)));
}

} // namespace
} // namespace tavel
