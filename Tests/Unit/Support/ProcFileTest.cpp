#include "Support/FileError.h"
#include "Support/InputFile.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <fstream>
#include <sstream>
#include <string>

namespace tavel {
namespace {

// The files of Linux's /proc are regular files, and their size is always 0.

TEST(ProcFile, isReadAlthoughItsSizeIsZero) {
    std::ostringstream expected;
    expected << std::ifstream("/proc/version").rdbuf();
    ASSERT_GT(expected.str().size(), 10U);
    InputFile file("/proc/version", InputFile::Links::refuse);
    EXPECT_EQ(file.size(), 0U);
    EXPECT_EQ(file.read(5).view(), expected.str().substr(0, 5));
    EXPECT_EQ(file.read(std::size_t{1} << 40).view(), expected.str().substr(5));
}

TEST(ProcFile, tellsThatReadingFailed) {
    InputFile file("/proc/self/mem", InputFile::Links::refuse); // address 0 is not mapped
    try {
        static_cast<void>(file.read(100));
        FAIL() << "Reading has to fail";
    } catch (const FileError& error) {
        EXPECT_EQ(error.operation(), FileError::Operation::read);
        EXPECT_EQ(error.code(), EIO);
        EXPECT_TRUE(error.description().starts_with("/proc/self/mem: ")) << error.description();
    }
}

} // namespace
} // namespace tavel
