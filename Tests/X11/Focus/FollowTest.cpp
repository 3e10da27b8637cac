#include "Tests/X11/Focus/AccessibleProgram.h"
#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <thread>

namespace tavel {

namespace {

const std::int32_t thisProcess = getpid();

/// The number of events that are registered for listeners.
std::size_t registeredEvents(const TestAccessibilityBus& buses) {
    const auto connection = buses.connect();
    const auto reply = callOnBus(connection.get(), "org.a11y.atspi.Registry", "/org/a11y/atspi/registry",
                                 "org.a11y.atspi.Registry", "GetRegisteredEvents", nullptr);
    const GioPointer<GVariant> events(g_variant_get_child_value(reply.get(), 0));
    return g_variant_n_children(events.get());
}

void expectRoleOf(FocusDesktop& desktop, AccessibleProgram& program) {
    program.set("/view", {30, {}, {}});
    program.gain("/view");
    desktop.awaitRole(thisProcess, "AXLayoutArea");
}

TEST(Follow, withoutABusKnowsNothing) {
    FocusDesktop desktop;
    desktop.probe().follow(true);
    EXPECT_FALSE(desktop.probe().isTrusted());
    EXPECT_EQ(desktop.probe().focusedRole(thisProcess), std::nullopt);
    desktop.probe().follow(false);
    EXPECT_FALSE(desktop.probe().isTrusted());
}

TEST(Follow, finallyBeginsWhenThereIsABus) {
    FocusDesktop desktop;
    desktop.probe().follow(true);
    AccessibleProgram program(desktop.startBuses());
    EXPECT_FALSE(desktop.probe().isTrusted());
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
    expectRoleOf(desktop, program);
}

TEST(Follow, findsTheBusInTheRuntimeDirectory) {
    FocusDesktop desktop;
    AccessibleProgram program(desktop.startBuses());
    unsetenv("DBUS_SESSION_BUS_ADDRESS");
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
    expectRoleOf(desktop, program);
}

TEST(Follow, neverStartsASessionBus) {
    FocusDesktop desktop;
    // Anything that starts a bus runs this program.
    const auto marker = desktop.directory().path() / "launched";
    const auto launcher =
        desktop.directory().createFile("programs/dbus-launch", "#!/bin/sh\n: >" + marker.string() + "\n");
    std::filesystem::permissions(launcher, std::filesystem::perms::owner_all);
    setenv("PATH", (launcher.parent_path().string() + ":" + std::getenv("PATH")).c_str(), 1);
    setenv("DISPLAY", desktop.display().c_str(), 1);
    desktop.probe().follow(true);
    setenv("DBUS_SESSION_BUS_ADDRESS", "autolaunch:", 1);
    desktop.probe().follow(true);
    EXPECT_FALSE(desktop.probe().isTrusted());
    EXPECT_FALSE(std::filesystem::exists(marker));
}

TEST(Follow, asksTheRegistryForEventsOnlyAsLongAsItLasts) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    EXPECT_EQ(registeredEvents(buses), 0U);
    desktop.probe().follow(true);
    EXPECT_EQ(registeredEvents(buses), 2U);
    desktop.probe().follow(true);
    EXPECT_EQ(registeredEvents(buses), 2U);
    desktop.probe().follow(false);
    EXPECT_EQ(registeredEvents(buses), 0U);
}

TEST(Follow, endsAndBeginsAnew) {
    FocusDesktop desktop;
    AccessibleProgram program(desktop.startBuses());
    desktop.probe().follow(true);
    expectRoleOf(desktop, program);
    desktop.probe().follow(false);
    desktop.probe().follow(false);
    EXPECT_FALSE(desktop.probe().isTrusted());
    EXPECT_EQ(desktop.probe().focusedRole(thisProcess), std::nullopt);
    program.gain("/view"); // reported without a listener
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
    EXPECT_EQ(desktop.probe().focusedRole(thisProcess), std::nullopt);
    expectRoleOf(desktop, program);
}

TEST(Follow, onceMoreKeepsWhatIsKnown) {
    FocusDesktop desktop;
    AccessibleProgram program(desktop.startBuses());
    desktop.probe().follow(true);
    expectRoleOf(desktop, program);
    desktop.probe().follow(true);
    desktop.awaitRole(thisProcess, "AXLayoutArea"); // without a further report of the program
}

TEST(Follow, outlivesTheBusAndFindsTheNextOne) {
    FocusDesktop desktop;
    TestAccessibilityBus& buses = desktop.startBuses();
    AccessibleProgram program(buses);
    desktop.probe().follow(true);
    expectRoleOf(desktop, program);
    buses.stop();
    runUntil([&] { return !desktop.probe().isTrusted(); });
    EXPECT_EQ(desktop.probe().focusedRole(thisProcess), std::nullopt);
    buses.start();
    desktop.probe().follow(true);
    EXPECT_TRUE(desktop.probe().isTrusted());
    AccessibleProgram next(buses);
    expectRoleOf(desktop, next);
}

TEST(Follow, endsAtAnyMomentWhileProgramsTell) {
    FocusDesktop desktop;
    AccessibleProgram program(desktop.startBuses());
    std::atomic<bool> isOver = false;
    std::jthread user([&] {
        while (!isOver) {
            program.gain("/view");
            program.lose("/view");
            std::this_thread::sleep_for(std::chrono::microseconds(100));
        }
    });
    for (int round = 0; round < 20; ++round) {
        desktop.probe().follow(true);
        EXPECT_TRUE(desktop.probe().isTrusted());
        desktop.probe().focusedRole(thisProcess);
        g_main_context_iteration(nullptr, FALSE);
        desktop.probe().follow(false);
    }
    desktop.probe().follow(true);
    desktop.endProbe();
    isOver = true;
}

} // namespace

} // namespace tavel
