#include "Tests/Wayland/Compositor.h"

#include "Tests/Support/TestDirectory.h"
#include "Tests/Support/TestProcess.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Wayland/CompositorOwner.h"

#include <fcntl.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Optional;

using Kind = Compositor::Kind;

constexpr std::optional<std::vector<std::string>> noContent;

/// The programs of wl-clipboard as clients. They speak wlr-data-control-unstable-v1 only.
class CompositorTest : public testing::Test {
protected:
    TestProcess::Options commandLine(std::vector<std::string> arguments) const {
        TestProcess::Options options;
        options.program = "/usr/bin/env";
        options.environment = {{"PATH=/usr/bin:/bin", "WAYLAND_DISPLAY=" + compositor_.display(),
                                "XDG_RUNTIME_DIR=" + directory_.runtimeDirectory().string(),
                                "TMPDIR=" + directory_.temporaryDirectory().string()}};
        options.arguments = std::move(arguments);
        options.arguments.insert(options.arguments.begin(), "env");
        options.capturesErrors = true;
        return options;
    }

    /// wl-paste's output, if it succeeds.
    std::optional<std::string> paste(const std::vector<std::string>& options) const {
        std::vector<std::string> arguments{"wl-paste"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        TestProcess program(commandLine(arguments));
        if (program.waitForExit() != 0)
            return std::nullopt;
        return program.output();
    }

    /// A running wl-copy, once it has the selection.
    std::unique_ptr<TestProcess> copy(const std::string& content,
                                      const std::vector<std::string>& options = {},
                                      Kind kind = Kind::clipboard) {
        std::vector<std::string> arguments{"wl-copy", "--foreground"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        const std::size_t changesBefore = compositor_.changesOf(kind);
        auto program = std::make_unique<TestProcess>(commandLine(arguments));
        program->send(content);
        program->closeInput();
        waitUntil([&] { return compositor_.changesOf(kind) > changesBefore; }, TestProcess::deadline);
        return program;
    }

    TestDirectory directory_;
    Compositor compositor_;
    CompositorOwner owner_{compositor_};
};

/// More than a pipe holds.
std::string longContent() {
    return std::string(std::size_t{1} << 20U, 'x') + "end";
}

std::vector<std::string> manyTypes() {
    std::vector<std::string> types;
    for (int number = 0; number < 10'000; ++number)
        types.push_back("application/x-type-" + std::to_string(number));
    return types;
}

std::string linesOf(const std::vector<std::string>& types) {
    std::ostringstream lines;
    std::ranges::copy(types, std::ostream_iterator<std::string>(lines, "\n"));
    return lines.str();
}

TEST_F(CompositorTest, givesAnOwnersContentToAProgram) {
    owner_.offerValue("text/plain", longContent());
    owner_.take();
    EXPECT_THAT(paste({"--no-newline", "--type", "text/plain"}), Optional(longContent()));
    EXPECT_THAT(owner_.requests(), ElementsAre("text/plain"));
}

TEST_F(CompositorTest, passesTypesOnAsOffered) {
    owner_.offer({"text/plain", "image/png", "text/plain"});
    owner_.take();
    EXPECT_THAT(paste({"--list-types"}), Optional(std::string("text/plain\nimage/png\ntext/plain\n")));
}

TEST_F(CompositorTest, passesTenThousandTypesOn) {
    owner_.offer(manyTypes());
    owner_.take();
    EXPECT_THAT(paste({"--list-types"}), Optional(linesOf(manyTypes())));
}

TEST_F(CompositorTest, passesAnEmptyListOn) {
    owner_.offer({});
    owner_.take();
    EXPECT_THAT(compositor_.typesOf(Kind::clipboard), Optional(IsEmpty()));
    EXPECT_THAT(paste({"--list-types"}), Optional(std::string()));
}

TEST_F(CompositorTest, keepsThePrimarySelectionApart) {
    owner_.offerValue("text/plain", "selected");
    owner_.take(Kind::primary);
    EXPECT_THAT(paste({"--no-newline", "--primary"}), Optional(std::string("selected")));
    EXPECT_EQ(paste({}), std::nullopt);
    const auto program = copy("copied", {"--primary"}, Kind::primary);
    EXPECT_FALSE(owner_.owns(Kind::primary));
    EXPECT_EQ(compositor_.readAll(Kind::primary, "text/plain"), "copied");
    EXPECT_EQ(compositor_.typesOf(Kind::clipboard), noContent);
}

TEST_F(CompositorTest, readsFromAProgram) {
    const auto program = copy(longContent(), {"--type", "application/x-test"});
    EXPECT_THAT(compositor_.typesOf(Kind::clipboard), Optional(ElementsAre("application/x-test")));
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, "application/x-test"), longContent());
}

TEST_F(CompositorTest, passesContentFromProgramToProgram) {
    const auto program = copy(longContent());
    EXPECT_THAT(paste({"--no-newline"}), Optional(longContent()));
}

TEST_F(CompositorTest, tellsAProgramThatItsContentWasReplaced) {
    const auto program = copy("copied");
    owner_.offerValue("text/plain", "later");
    owner_.take();
    EXPECT_EQ(program->waitForEnd(), 0);
    EXPECT_TRUE(owner_.owns());
}

TEST_F(CompositorTest, tellsAnOwnerThatItsContentWasReplaced) {
    owner_.offerValue("text/plain", "earlier");
    owner_.take();
    EXPECT_TRUE(owner_.owns());
    const auto program = copy("copied");
    EXPECT_FALSE(owner_.owns());
    owner_.release();
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, "text/plain"), "copied");
}

TEST_F(CompositorTest, clearsTheSelectionOfAProgramThatEnds) {
    const auto program = copy("copied");
    program->kill();
    waitUntil([this] { return compositor_.changesOf(Kind::clipboard) == 2; }, TestProcess::deadline);
    EXPECT_EQ(compositor_.typesOf(Kind::clipboard), noContent);
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, "text/plain"), "");
}

TEST_F(CompositorTest, clearsTheSelectionAtAProgramsWish) {
    owner_.offerValue("text/plain", "secret");
    owner_.take();
    TestProcess program(commandLine({"wl-copy", "--clear"}));
    EXPECT_EQ(program.waitForExit(), 0);
    waitUntil([this] { return !owner_.owns(); }, TestProcess::deadline);
    EXPECT_EQ(compositor_.typesOf(Kind::clipboard), noContent);
}

TEST_F(CompositorTest, letsAProgramWriteToAnyDescriptor) {
    const std::filesystem::path file = directory_.createFile("target");
    const auto program = copy("copied");
    compositor_.read(Kind::clipboard, "text/plain", Descriptor(open(file.c_str(), O_WRONLY | O_CLOEXEC)));
    waitUntil([&] { return std::filesystem::file_size(file) == 6; }, TestProcess::deadline);
}

TEST_F(CompositorTest, disappearsWhenItIsStopped) {
    const auto program = copy("copied");
    EXPECT_EQ(compositor_.clientCount(), 1U);
    compositor_.stop();
    program->waitForEnd();
    EXPECT_FALSE(std::filesystem::exists(compositor_.display()));
    compositor_.stop();
    owner_.take();
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, "text/plain"), "");
}

TEST_F(CompositorTest, servesAProgramThatConnectedWhileItHung) {
    owner_.offerValue("text/plain", "later");
    compositor_.hang();
    TestProcess program(commandLine({"wl-paste", "--no-newline"}));
    owner_.take();
    compositor_.goOn();
    EXPECT_EQ(program.waitForEnd(), 0);
    EXPECT_EQ(program.output(), "later");
}

TEST_F(CompositorTest, leavesNoDescriptorOpen) {
    const auto descriptors = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
    };
    const auto before = descriptors();
    {
        Compositor other;
        CompositorOwner owner(other);
        owner.offer({"text/plain", "text/html"});
        owner.on("text/html", owner.silence());
        owner.take();
        other.read(Kind::clipboard, "text/html");
        owner.awaitRequest("text/html");
        EXPECT_EQ(other.readAll(Kind::clipboard, "text/plain"), "");
        EXPECT_EQ(other.readAll(Kind::primary, "text/plain"), "");
    }
    EXPECT_EQ(descriptors(), before);
    const auto program = copy("copied");
    const auto whileCopied = descriptors();
    for (int time = 0; time < 100; ++time)
        compositor_.read(Kind::clipboard, "text/plain");
    EXPECT_EQ(descriptors(), whileCopied);
}

} // namespace

} // namespace tavel
