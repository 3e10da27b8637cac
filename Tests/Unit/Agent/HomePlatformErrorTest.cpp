#include "TavelClipboardAgent/HomePlatformError.h"

#include "Support/FileError.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <map>
#include <string>

namespace tavel {
namespace {

/// Above every errno of the supported systems; a few numbers below it are none.
constexpr int lastCode = 200;

using Codes = std::map<int, int>;
using Operation = FileError::Operation;

int codeOf(const Codes& codes, int code, int otherwise) {
    const auto found = codes.find(code);
    return found == codes.end() ? otherwise : found->second;
}

Error shown(Operation operation, int code) {
    return homePlatformError(FileError(operation, code, "/a directory/file"));
}

TEST(HomePlatformError, numbersFailuresOfReading) {
    const Codes codes{{ENOENT, 260}, {EPERM, 257}, {EACCES, 257}, {ENAMETOOLONG, 258}, {EFBIG, 263}};
    for (int code = -1; code <= lastCode; ++code)
        EXPECT_EQ(shown(Operation::read, code).code(), codeOf(codes, code, 256)) << std::strerror(code);
}

TEST(HomePlatformError, numbersFailuresOfWriting) {
    const Codes codes{{ENOENT, 4},   {EPERM, 513},  {EACCES, 513}, {ENAMETOOLONG, 514},
                      {ENOSPC, 640}, {EDQUOT, 640}, {EROFS, 642},  {EEXIST, 516}};
    for (int code = -1; code <= lastCode; ++code)
        EXPECT_EQ(shown(Operation::write, code).code(), codeOf(codes, code, 512)) << std::strerror(code);
}

TEST(HomePlatformError, namesTheDomainAndKeepsTheDescription) {
    for (const Operation operation : {Operation::read, Operation::write}) {
        for (const int code : {ENOENT, ENOSPC, EIO}) {
            const Error error = shown(operation, code);
            EXPECT_EQ(error.domain(), "NSCocoaErrorDomain");
            EXPECT_EQ(error.description(), "/a directory/file: " + std::string(std::strerror(code)));
        }
    }
}

TEST(HomePlatformError, leavesOtherErrorsAsTheyAre) {
    const Error error = homePlatformError(Error("Tavel", 2, "refused"));
    EXPECT_EQ(error.domain(), "Tavel");
    EXPECT_EQ(error.code(), 2);
    EXPECT_EQ(error.description(), "refused");
}

} // namespace
} // namespace tavel
