#include "Support/Error.h"

#include "Support/FileError.h"
#include "Support/ScopeExit.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <exception>
#include <stdexcept>
#include <string>

namespace tavel {
namespace {

TEST(Error, tellsItsDomainCodeAndDescription) {
    const Error error("LMDB", -7, "Le fichier n’existe pas");
    EXPECT_EQ(error.domain(), "LMDB");
    EXPECT_EQ(error.code(), -7);
    EXPECT_EQ(error.description(), "Le fichier n’existe pas");
}

TEST(Error, describesItselfAsAnyException) {
    try {
        throw Error("Tavel", 1, "refusé");
    } catch (const std::exception& error) {
        EXPECT_STREQ(error.what(), "refusé");
    }
}

TEST(FileError, tellsTheOperationTheErrnoAndTheFile) {
    using Operation = FileError::Operation;
    for (const Operation operation : {Operation::read, Operation::write}) {
        for (const int code : {ENOENT, ENOSPC, EIO}) {
            const FileError error(operation, code, "/a directory/file");
            EXPECT_EQ(error.operation(), operation);
            EXPECT_EQ(error.domain(), "POSIX");
            EXPECT_EQ(error.code(), code);
            EXPECT_EQ(error.path(), "/a directory/file");
            EXPECT_EQ(error.description(), "/a directory/file: " + std::string(std::strerror(code)));
        }
    }
    EXPECT_EQ(FileError(Operation::read, ENOENT, "").description(),
              ": " + std::string(std::strerror(ENOENT)));
}

TEST(ScopeExit, runsItsActionWhenTheScopeEnds) {
    int runs = 0;
    {
        const ScopeExit leave([&runs] { ++runs; });
        EXPECT_EQ(runs, 0);
    }
    EXPECT_EQ(runs, 1);
}

TEST(ScopeExit, runsItsActionWhenAnExceptionLeavesTheScope) {
    int runs = 0;
    EXPECT_THROW(
        {
            const ScopeExit leave([&runs] { ++runs; });
            throw std::runtime_error("out");
        },
        std::runtime_error);
    EXPECT_EQ(runs, 1);
}

TEST(ScopeExit, runsSeveralActionsInReverse) {
    std::string order;
    {
        const ScopeExit first([&order] { order += "first"; });
        const ScopeExit second([&order] { order += "second "; });
    }
    EXPECT_EQ(order, "second first");
}

} // namespace
} // namespace tavel
