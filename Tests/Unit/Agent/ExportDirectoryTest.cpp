#include "TavelClipboardAgent/main/ExportDirectory.h"

#include "Tests/Unit/Fixtures/ScratchDirectory.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>
#include <stdexcept>
#include <thread>

namespace tavel {
namespace {

TEST(ExportDirectory, isTheOwnersAlone) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a/b");
    directory.create();
    EXPECT_EQ(std::filesystem::status(directory.path()).permissions(), std::filesystem::perms(0700));
}

TEST(ExportDirectory, letsNothingInOnceItIsRemoved) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    directory.create();
    EXPECT_TRUE(directory.whileThere([&] { std::ofstream(directory.path() / "file") << "a"; }));
    directory.remove();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
    bool ran = false;
    EXPECT_FALSE(directory.whileThere([&] { ran = true; }));
    EXPECT_FALSE(ran);
}

TEST(ExportDirectory, goesOnAfterAWriteThatFailed) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    EXPECT_THROW(directory.whileThere([] { throw std::runtime_error("full"); }), std::runtime_error);
    EXPECT_TRUE(directory.whileThere([] {}));
}

TEST(ExportDirectory, waitsForARunningWriteBeforeItIsRemoved) {
    const ScratchDirectory scratch;
    ExportDirectory directory(scratch / "a");
    directory.create();
    std::atomic<bool> writing = false;
    std::thread writer([&] {
        static_cast<void>(directory.whileThere([&] {
            writing = true;
            writing.notify_one();
            for (int i = 0; i < 200; ++i) // creates and fills it while the other thread waits to remove it
                std::ofstream(directory.path() / std::to_string(i)) << "a";
        }));
    });
    writing.wait(false);
    directory.remove();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
    writer.join();
    EXPECT_FALSE(std::filesystem::exists(directory.path()));
}

} // namespace
} // namespace tavel
