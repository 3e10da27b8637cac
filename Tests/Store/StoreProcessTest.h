#pragma once

#include "Linux/Store/StorePasteboard.h"
#include "Tests/Store/StampedContent.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/TestProcess.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tavel {

/// A store that this process and its children share. A process must not open it twice, so the tests open it
/// themselves.
class StoreProcessTest : public testing::Test {
protected:
    static constexpr std::uint64_t mebibyte = std::uint64_t{1} << 20;

    StoreProcessTest() = default;

    /// Opens the store anew, as a program that starts does.
    std::unique_ptr<StorePasteboard> open() const;

    /// Starts another program on the same pasteboard; PasteboardWriter.cpp describes the roles.
    std::unique_ptr<TestProcess> start(const std::vector<std::string>& role) const;

    /// The disk space that the store's files take.
    std::uint64_t storeBytes() const;

    const std::filesystem::path& storeDirectory() const { return storeDirectory_; }

private:
    const TestDirectory scratch_;
    const std::filesystem::path storeDirectory_ = scratch_.runtimeDirectory();
};

} // namespace tavel
