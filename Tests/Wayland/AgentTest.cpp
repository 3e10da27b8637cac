#include "Tests/Protocol/AgentTest.h"

#include "Tests/Support/XServer.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/CompositorOwner.h"

#include <atomic>
#include <cstdint>
#include <fstream>
#include <future>
#include <iterator>
#include <memory>
#include <optional>
#include <string>

namespace tavel {

namespace {

using Kind = Compositor::Kind;

constexpr auto plainText = "text/plain;charset=utf-8";
constexpr auto notPermitted = "Renommage : autorise Tavel Bridge dans Accessibilité et Surveillance de "
                              "l’entrée, puis réactive l’option.";

class WaylandAgent : public AgentTest {
protected:
    AgentProcess::Options waylandOptions(const Compositor& compositor,
                                         std::vector<std::string> arguments = {}) const {
        AgentProcess::Options wayland = options(std::move(arguments));
        wayland.environment["WAYLAND_DISPLAY"] = compositor.display();
        return wayland;
    }

    /// The agent that watches the clipboard. Starts with the first call.
    AgentProcess& agent() {
        if (agent_ == nullptr)
            agent_ = &start(waylandOptions(compositor_));
        return *agent_;
    }

    static Json writeText(AgentProcess& agent) {
        return request(agent, {{"command", "write_text"}, {"text_b64", "aGk"}, {"marker", ""}});
    }

    /// The agent must stand on the store: it reports what another program writes there.
    void expectHeadless(const AgentProcess::Options& headless) {
        AgentProcess& alone = start(headless);
        const std::int64_t sequence = otherApplication().copyText("hi");
        EXPECT_EQ(alone.nextMessage(), announcement(sequence));
        EXPECT_EQ(alone.nextMessage(), textEvent("aGk", 2, sequence));
    }

    static bool hasLoaded(const AgentProcess& agent, const std::string& library) {
        std::ifstream file("/proc/" + std::to_string(agent.processIdentifier()) + "/maps");
        const std::string maps{std::istreambuf_iterator<char>(file), {}};
        return maps.find(library) != std::string::npos;
    }

    Compositor compositor_;

private:
    AgentProcess* agent_ = nullptr;
};

TEST_F(WaylandAgent, reportsCopiesAndWritesWhatTheParentSends) {
    CompositorOwner owner(compositor_);
    owner.offerValue(plainText, "hi");
    agent();
    owner.take();
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    EXPECT_EQ(agent().nextMessage(), textEvent("aGk", 2, 1));
    EXPECT_EQ(writeText(agent()), success(2));
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, plainText), "hi");
    expectSilence(agent());
}

TEST_F(WaylandAgent, isRefusedThePasteboardsPrompt) {
    EXPECT_EQ(request(agent(), {{"command", "configure_file_prompt"}, {"rename_prompt", true}}),
              failure(notPermitted, 0));
    EXPECT_EQ(request(agent(), {{"command", "configure_file_prompt"}, {"rename_prompt", false}}), success(0));
}

TEST_F(WaylandAgent, hasThePrimarySelectionUnderItsName) {
    AgentProcess& onPrimary = start(waylandOptions(compositor_, {"--test-pasteboard", "PRIMARY"}));
    EXPECT_EQ(writeText(onPrimary), success(1));
    EXPECT_EQ(compositor_.readAll(Kind::primary, plainText), "hi");
    EXPECT_EQ(compositor_.typesOf(Kind::clipboard), std::nullopt);
}

TEST_F(WaylandAgent, hasPasteboardsOfOtherNamesInTheStore) {
    expectHeadless(waylandOptions(compositor_, {"--test-pasteboard", *sharedPasteboard}));
}

TEST_F(WaylandAgent, hasThePrimarySelectionInTheStoreWhereThereIsNone) {
    const Compositor withoutPrimary({.offersExt = false, .hasPrimary = false});
    AgentProcess& onStore = start(waylandOptions(withoutPrimary, {"--test-pasteboard", "PRIMARY"}));
    EXPECT_EQ(writeText(onStore), success(1));
}

TEST_F(WaylandAgent, prefersWaylandToX11) {
    const XServer server;
    AgentProcess::Options both = waylandOptions(compositor_);
    both.environment["DISPLAY"] = server.display();
    EXPECT_EQ(writeText(start(both)), success(1));
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, plainText), "hi");
}

TEST_F(WaylandAgent, worksOnTheStoreWithoutDataControl) {
    const Compositor other({.offersExt = false, .offersWlr = false});
    AgentProcess::Options headless = options();
    headless.environment["WAYLAND_DISPLAY"] = other.display();
    expectHeadless(headless);
}

TEST_F(WaylandAgent, worksOnTheStoreIfTheDisplayIsNone) {
    for (const char* const display : {"", "wayland-7", "/nonexistent/wayland-0", "/etc/passwd"}) {
        AgentProcess::Options headless = options();
        headless.environment["WAYLAND_DISPLAY"] = display;
        expectHeadless(headless);
    }
}

TEST_F(WaylandAgent, aloneLoadsTheLibraryOfWayland) {
    EXPECT_TRUE(hasLoaded(agent(), "libwayland-client"));
    EXPECT_FALSE(hasLoaded(start(), "libwayland-client"));
}

TEST_F(WaylandAgent, keepsNoPingWaitingForAnOwnerThatIsSilent) {
    CompositorOwner owner(compositor_);
    owner.offer({plainText});
    owner.on(plainText, owner.silence());
    agent();
    owner.take();
    EXPECT_EQ(agent().nextMessage(), announcement(1));
    static_cast<void>(owner.awaitRequest(plainText));
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
    CompositorOwner next(compositor_);
    next.offerValue(plainText, "hi");
    next.take();
    EXPECT_EQ(agent().nextMessage(), announcement(2));
    EXPECT_EQ(agent().nextMessage(), textEvent("aGk", 2, 2));
}

TEST_F(WaylandAgent, answersWhileAProgramCopiesWithoutEnd) {
    CompositorOwner owner(compositor_);
    owner.offerValue(plainText, "hi");
    agent();
    std::atomic<bool> isOver = false;
    auto copying = std::async(std::launch::async, [&] {
        while (!isOver)
            owner.take();
    });
    for (std::uint64_t number = 1; number <= 20; ++number) {
        agent().send(pingLine(number));
        Json message;
        do
            message = agent().nextMessage();
        while (message.contains("event"));
        EXPECT_EQ(message.value("request_id", 0U), number);
    }
    EXPECT_GT(compositor_.changesOf(Kind::clipboard), 20U);
    isOver = true;
    copying.get();
}

#if !defined(__SANITIZE_ADDRESS__) &&                                                                        \
    !defined(__SANITIZE_THREAD__) // whose runtime may have a tick of its own
TEST_F(WaylandAgent, hasNoTick) {
    CompositorOwner owner(compositor_);
    owner.offerValue(plainText, "hi");
    AgentProcess& watcher = start(waylandOptions(compositor_, {"--parent-pid", std::to_string(getpid())}));
    owner.take();
    EXPECT_EQ(watcher.nextMessage(), announcement(1));
    EXPECT_EQ(watcher.nextMessage(), textEvent("aGk", 2, 1));
    watcher.waitUntilAtRest();
}
#endif

TEST_F(WaylandAgent, thatLosesTheCompositorAnswersAndEndsAsEver) {
    EXPECT_EQ(writeText(agent()), success(1));
    compositor_.stop();
    EXPECT_EQ(request(agent(), {{"command", "ping"}}), success(1));
    EXPECT_EQ(writeText(agent()), failure("Écriture NSPasteboard impossible", 1));
    agent().closeInput();
    EXPECT_EQ(agent().nextLine(), std::nullopt);
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(WaylandAgent, whoseCompositorHangsEndsOnQuit) {
    EXPECT_EQ(writeText(agent()), success(1));
    compositor_.hang();
    EXPECT_EQ(request(agent(), {{"command", "quit"}}), success(1));
    EXPECT_EQ(agent().waitForExit(), 0);
    EXPECT_TRUE(exportDirectories().empty());
}

TEST_F(WaylandAgent, whoseCompositorHangsForAWhileGoesOnAfterwards) {
    EXPECT_EQ(writeText(agent()), success(1));
    compositor_.hang();
    EXPECT_EQ(writeText(agent()), failure("Écriture NSPasteboard impossible", 1));
    compositor_.goOn();
    Json reply;
    do
        reply = writeText(agent());
    while (reply == failure("Écriture NSPasteboard impossible", 1));
    EXPECT_EQ(reply, success(2)) << "what was withdrawn counts for nothing, and is told to nobody";
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, plainText), "hi");
    expectSilence(agent());
}

TEST_F(WaylandAgent, whoseCompositorAnswersNothingAtTheStartStandsOnTheStore) {
    compositor_.hang();
    AgentProcess::Options hung = options();
    hung.environment["WAYLAND_DISPLAY"] = compositor_.display();
    expectHeadless(hung);
}

} // namespace

} // namespace tavel
