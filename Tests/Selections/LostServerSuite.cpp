#include "Tests/Selections/Checks.h"
#include "Tests/Selections/SelectionSuites.h"
#include "Tests/Support/WaitUntil.h"

#include <ctime>
#include <thread>

namespace tavel {

namespace {

std::chrono::nanoseconds threadTime() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

} // namespace

TEST_P(LostServer, whileNothingHappensLeavesAProgramThatGoesOn) {
    const auto peers = start(longTimeOuts());
    peers->write("public.utf8-plain-text", "text");
    const auto count = peers->board().changeCount();
    peers->stopServer();
    expectNothing(*peers, count);
}

TEST_P(LostServer, isNoticedByItselfAndNoReasonToSpin) {
    const auto peers = start(longTimeOuts());
    peers->stopServer();
    waitUntil(
        [&] {
            bool isLost = false;
            peers->program().run([&] { isLost = peers->program().selections().isLost(); });
            return isLost;
        },
        atOnce);
    std::chrono::nanoseconds before{};
    std::chrono::nanoseconds after{};
    constexpr std::chrono::milliseconds watched{500};
    peers->program().run([&] { before = threadTime(); });
    std::this_thread::sleep_for(watched); // deliberate: measures an idle program
    peers->program().run([&] { after = threadTime(); });
    EXPECT_LT(after - before, watched / 2);
}

TEST_P(LostServer, duringAReadEndsItAtOnce) {
    const auto peers = start(longTimeOuts());
    const auto owner = peers->makeOwner();
    owner->offer({"UTF8_STRING"});
    owner->stopAfter("UTF8_STRING", "", [&] { peers->stopServer(); });
    owner->take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers->text(), std::nullopt); }), atOnce);
    expectNothing(*peers, 1);
}

TEST_P(LostServer, halfWayThroughAReadEndsItAtOnce) {
    const auto peers = start(longTimeOuts());
    const auto owner = peers->makeOwner();
    owner->offer({"UTF8_STRING"});
    owner->stopAfter("UTF8_STRING", "half", [&] { peers->stopServer(); });
    owner->take();
    EXPECT_LT(durationOf([&] { EXPECT_EQ(peers->text(), std::nullopt); }), atOnce);
    expectNothing(*peers, 1);
}

TEST_P(LostServer, whileAReaderIsServedEndsTheServing) {
    const auto peers = start(longTimeOuts());
    peers->write("public.png", distinctBytes(std::size_t{30} << 20));
    const auto reader = peers->makeReader();
    reader->ask("image/png");
    EXPECT_FALSE(reader->takePart().empty());
    EXPECT_TRUE(peers->isServing());
    peers->stopServer();
    expectNothing(*peers, 1);
}

} // namespace tavel
