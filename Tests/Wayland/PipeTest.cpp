#include "Tests/Selections/Reading.h"
#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/Wayland/WaylandPeers.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <poll.h>

#include <atomic>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <thread>

namespace tavel {

namespace {

constexpr std::size_t large = std::size_t{30} << 20;

/// How values come through pipes, and go.
class PipeTest : public testing::Test {
protected:
    WaylandPeers peers{longTimeOuts()};
    CompositorOwner owner{peers.compositor()};
};

// The pipe of an owner that was replaced ends like that of one that has no text, and may do so before the
// news.
TEST_F(PipeTest, ofAnOwnerThatIsReplacedMeanwhileGivesNoEmptyValue) {
    CompositorOwner next(peers.compositor());
    next.offerValue(plainTarget, "next");
    owner.offer({plainTarget});
    owner.on(plainTarget, [&](const auto& request) {
        peers.compositor().hang();
        next.take(); // which nobody is told of before the compositor goes on
        request.transfer->close();
        std::this_thread::sleep_for(
            std::chrono::milliseconds(100)); // deliberate: lets the program see the end
        peers.compositor().goOn();
    });
    owner.take();
    EXPECT_EQ(peers.text(), std::nullopt);
    EXPECT_EQ(peers.text(), "next");
}

TEST_F(PipeTest, isReadNoFurtherThanItsReaderTakes) {
    std::atomic<bool> isClosed = false;
    owner.offer({"image/png"});
    owner.on("image/png", [&](const auto& request) {
        const std::string part(100'000, 'x');
        while (request.transfer->write(part)) {
        }
        isClosed = true;
    });
    owner.take();
    EXPECT_EQ(peers.board().data("public.png", 1'000'000)->size(), 1'000'001U);
    waitUntil([&] { return isClosed.load(); }, atOnce);
}

TEST_F(PipeTest, thatEndsHalfWayHasTheBeginning) {
    owner.offer({plainTarget});
    owner.on(plainTarget, [&](const auto& request) {
        request.transfer->write("half");
        owner.disconnect();
    });
    owner.take();
    const auto text = peers.text();
    EXPECT_TRUE(!text || text == "half");
}

TEST_F(PipeTest, thatItsReaderClosesEarlyRaisesNoSignal) {
    ASSERT_EQ(std::signal(SIGPIPE, SIG_DFL), SIG_DFL);
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    for (int round = 0; round < 20; ++round) {
        static_cast<void>(
            peers.compositor().read(Compositor::Kind::clipboard, "image/png")); // closed at once
        const Descriptor pipe = peers.compositor().read(Compositor::Kind::clipboard, "image/png");
        char byte = 0;
        EXPECT_EQ(read(pipe.number(), &byte, 1), 1); // and closed then
    }
    EXPECT_TRUE(peers.compositor().readAll(Compositor::Kind::clipboard, "image/png") == bytes);
}

TEST_F(PipeTest, isTheOnlyKindOfFileThatIsWrittenTo) {
    const TestDirectory directory;
    const std::string file = (directory.path() / "file").string();
    const std::string bytes = distinctBytes(large);
    peers.write("public.png", bytes);
    for (const int mode : {O_RDWR | O_CREAT, O_RDONLY})
        peers.compositor().read(Compositor::Kind::clipboard, "image/png",
                                Descriptor(open(file.c_str(), mode, 0600)));
    peers.compositor().read(Compositor::Kind::clipboard, "image/png",
                            Descriptor(open("/dev/full", O_WRONLY)));
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0);
    const Descriptor writing(ends[1]);
    peers.compositor().read(Compositor::Kind::clipboard, "image/png", Descriptor(ends[0])); // the wrong end
    EXPECT_TRUE(peers.compositor().readAll(Compositor::Kind::clipboard, "image/png") == bytes);
    EXPECT_EQ(std::filesystem::file_size(file), 0U);
}

TEST_F(PipeTest, ofTheReaderThatHasStoodStillTheLongestGivesWayToThe257th) {
    constexpr std::size_t mostReaders = 256;
    const std::string bytes = distinctBytes(std::size_t{2} << 20);
    peers.write("public.png", bytes);
    std::vector<Descriptor> pipes;
    const auto begin = [&] {
        pipes.push_back(peers.compositor().read(Compositor::Kind::clipboard, "image/png"));
        pollfd readable{pipes.back().number(), POLLIN, 0};
        ASSERT_EQ(poll(&readable, 1, 60'000), 1);
    };
    for (std::size_t i = 0; i <= mostReaders; ++i)
        begin();
    EXPECT_LT(readToEnd(pipes.front()).size(), bytes.size());
    for (std::size_t i = 1; i < pipes.size(); ++i)
        EXPECT_TRUE(readToEnd(pipes[i]) == bytes) << i;
}

std::size_t descriptorCount() {
    const std::filesystem::directory_iterator descriptors("/proc/self/fd");
    return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

TEST_F(PipeTest, isClosedHoweverManyThereWere) {
    owner.offerValue(plainTarget, "theirs");
    const auto pass = [&] {
        owner.take();
        EXPECT_EQ(peers.text(), "theirs");
        peers.write(plainText, "ours");
        EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::clipboard, plainTarget), "ours");
    };
    pass();
    peers.settle();
    const std::size_t before = descriptorCount();
    for (int round = 0; round < 5'000; ++round)
        pass();
    peers.settle();
    waitUntil([&] { return descriptorCount() <= before; }, atOnce);
}

TEST(DrippingOwner, isGivenUpAsTooSlow) {
    auto timeOuts = longTimeOuts();
    timeOuts.ownerInactivity = std::chrono::seconds(1);
    timeOuts.slowestOwner = TransferTimeOuts{}.slowestOwner;
    WaylandPeers peers(timeOuts);
    CompositorOwner owner(peers.compositor());
    std::atomic<bool> isClosed = false;
    owner.offer({plainTarget});
    owner.on(plainTarget, [&](const auto& request) {
        const auto end = std::chrono::steady_clock::now() + 2 * atOnce; // if the reader never gives up
        while (request.transfer->write("a little") && std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        isClosed = true;
    });
    owner.take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers.text(), std::nullopt); }), atOnce);
    waitUntil([&] { return isClosed.load(); }, atOnce);
}

} // namespace

} // namespace tavel
