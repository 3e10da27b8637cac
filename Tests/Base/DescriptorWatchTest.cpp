#include "Linux/Base/DescriptorWatch.h"

#include "Tests/Base/TestedEventLoop.h"
#include "Tests/Unit/Fixtures/Pipe.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <memory>
#include <new>
#include <optional>

namespace tavel {

TEST(DescriptorWatch, goesOnAfterAFunctionThatThrows) {
    const auto loop = makeTestedEventLoop();
    const Pipe pipe;
    int calls = 0;
    const DescriptorWatch watch(pipe.reader(), [&] {
        if (++calls == 1)
            throw std::bad_alloc();
    });
    ASSERT_EQ(write(pipe.writer(), "x", 1), 1);
    runUntil(*loop, [&] { return calls == 2; });
}

TEST(DescriptorWatch, canBeDestroyedByItsFunction) {
    const auto loop = makeTestedEventLoop();
    Pipe pipe;
    int calls = 0;
    std::optional<DescriptorWatch> watch;
    watch.emplace(pipe.reader(), [&calls, &watch, step = std::make_shared<int>(1)] {
        watch.reset();
        calls += *step; // the function still holds what it has captured
    });
    pipe.closeWriter();
    runUntil(*loop, [&] { return calls == 1; });
    for (int pass = 0; pass < 3; ++pass)
        loop->runOnce(std::chrono::milliseconds(0));
    EXPECT_EQ(calls, 1);
}

} // namespace tavel
