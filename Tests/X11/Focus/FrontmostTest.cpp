#include "Tests/X11/Focus/FocusDesktop.h"
#include "Tests/X11/ResidentMemory.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <vector>

namespace tavel {

namespace {

class Frontmost : public testing::Test {
protected:
    void show(std::optional<std::uint32_t> process, const std::string& className) {
        window = desktop.createWindow(process, className);
        desktop.setActiveWindow(window);
    }

    FocusDesktop desktop;
    xcb_window_t window = 0;
};

TEST_F(Frontmost, isNothingWithoutAnActiveWindow) {
    EXPECT_FALSE(desktop.probe().frontmostApplication());
    desktop.setActiveWindow(0);
    EXPECT_FALSE(desktop.probe().frontmostApplication());
    show(1234, "Thunar");
    desktop.destroyWindow(window);
    EXPECT_FALSE(desktop.probe().frontmostApplication());
}

TEST_F(Frontmost, isNothingIfTheWindowTellsNoProcess) {
    show(std::nullopt, "Thunar");
    EXPECT_FALSE(desktop.probe().frontmostApplication());
}

TEST_F(Frontmost, fileManagersAreCalledTheFinder) {
    for (const char* const name : {"Thunar", "Caja", "Nemo", "Pcmanfm", "org.gnome.Nautilus"}) {
        show(1234, name);
        const auto application = desktop.probe().frontmostApplication();
        ASSERT_TRUE(application) << name;
        EXPECT_EQ(application->processIdentifier, 1234) << name;
        EXPECT_EQ(application->bundleIdentifier, "com.apple.finder") << name;
    }
}

TEST_F(Frontmost, otherProgramsHaveNoBundleIdentifier) {
    for (const char* const name : {"XTerm", "Thunarx", ""}) {
        show(77, name);
        const auto application = desktop.probe().frontmostApplication();
        ASSERT_TRUE(application) << name;
        EXPECT_EQ(application->processIdentifier, 77) << name;
        EXPECT_EQ(application->bundleIdentifier, "") << name;
    }
}

TEST_F(Frontmost, isFoundBehindAFloodOfEventsWithoutMemoryForThem) {
    show(1234, "Thunar");
    X11Connection& flooder = desktop.windowManager();
    constexpr std::array<char, 32> event{XCB_CLIENT_MESSAGE, 8};
    for (int i = 0; i < 400'000; ++i)
        xcb_send_event(flooder.get(), 0, desktop.connection().window(), XCB_EVENT_MASK_NO_EVENT,
                       event.data());
    flooder.synchronize(); // the server has passed them on
    const std::size_t before = residentBytes();
    EXPECT_TRUE(desktop.probe().frontmostApplication());
    EXPECT_LT(residentBytes(), before + residentGrowth);
}

/// The windows that the window manager has been asked to activate.
class Activation : public Frontmost {
protected:
    Activation() {
        constexpr std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT;
        X11Connection& manager = desktop.windowManager();
        xcb_change_window_attributes(manager.get(), desktop.root(), XCB_CW_EVENT_MASK, &mask);
        manager.synchronize();
        manager.setEventHandler([this](const xcb_generic_event_t& event) {
            if ((event.response_type & 0x7FU) == XCB_CLIENT_MESSAGE)
                asked.push_back(reinterpret_cast<const xcb_client_message_event_t&>(event).window);
        });
    }

    void awaitRequest() {
        waitUntil(
            [this] {
                desktop.windowManager().dispatchEvents();
                return !asked.empty();
            },
            inTime);
    }

    std::vector<xcb_window_t> asked;
};

TEST_F(Activation, isAskedForTheWindowThatWasSeenInFrontLast) {
    show(1, "Thunar");
    desktop.probe().frontmostApplication();
    show(1, "Thunar");
    const xcb_window_t last = window;
    desktop.probe().frontmostApplication();
    show(2, "XTerm");
    desktop.probe().frontmostApplication();
    desktop.probe().activate(1);
    awaitRequest();
    EXPECT_EQ(asked, std::vector{last});
}

TEST_F(Activation, isNotAskedForAProcessThatWasNeverInFront) {
    show(1, "Thunar"); // in front, but the probe does not read it
    show(2, "XTerm");
    desktop.probe().frontmostApplication();
    desktop.probe().activate(1);
    desktop.probe().activate(3);
    desktop.probe().activate(2);
    awaitRequest();
    EXPECT_EQ(asked, std::vector{window});
}

TEST_F(Activation, isRememberedForTheLastProcessesAmongMany) {
    show(1, "Thunar");
    const xcb_window_t first = window;
    for (std::uint32_t process = 2; process < 200; ++process) {
        show(process, "XTerm");
        desktop.probe().frontmostApplication();
    }
    desktop.setActiveWindow(first);
    desktop.probe().frontmostApplication();
    desktop.probe().activate(199);
    desktop.probe().activate(1);
    waitUntil(
        [this] {
            desktop.windowManager().dispatchEvents();
            return asked.size() == 2;
        },
        inTime);
    EXPECT_EQ(asked, (std::vector{window, first}));
}

} // namespace

} // namespace tavel
