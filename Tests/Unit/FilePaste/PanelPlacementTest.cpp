#include "TavelClipboardAgent/FilePaste/PanelPlacement.h"

#include <gtest/gtest.h>

#include <optional>
#include <utility>
#include <vector>

namespace tavel {
namespace {

constexpr ScreenSize window{410, 200};
constexpr ScreenRectangle desktop{0, 0, 1280, 800};

using Place = std::optional<std::pair<double, double>>;

/// The window's left and bottom edges.
Place placeOn(std::vector<Screen> screens, ScreenPoint pointer, ScreenSize size = window) {
    const auto origin = panelOrigin({pointer, std::move(screens), size});
    return origin ? Place({origin->x, origin->y}) : std::nullopt;
}

Place place(ScreenPoint pointer, ScreenSize size = window) {
    return placeOn({{desktop, desktop}}, pointer, size);
}

TEST(PanelPlacement, isRightOfAndBelowThePointer) {
    EXPECT_EQ(place({100, 500}), Place({112, 288}));
    EXPECT_EQ(place({0, 799}), Place({12, 587}));
    EXPECT_EQ(place({100.5, 500.25}), Place({112.5, 288.25}));
}

TEST(PanelPlacement, staysWithinTheRightEdge) {
    EXPECT_EQ(place({858, 500}), Place({870, 288})) << "just fits";
    EXPECT_EQ(place({859, 500}), Place({870, 288}));
    EXPECT_EQ(place({1279, 500}), Place({870, 288}));
}

TEST(PanelPlacement, staysWithinTheBottomEdge) {
    EXPECT_EQ(place({100, 212}), Place({112, 0})) << "just fits";
    EXPECT_EQ(place({100, 211}), Place({112, 0}));
    EXPECT_EQ(place({100, 0}), Place({112, 0}));
    EXPECT_EQ(place({1279, 0}), Place({870, 0})) << "in the corner";
}

TEST(PanelPlacement, staysWithinTheVisiblePart) {
    // Each side has a bar, wide enough that a pointer in it would place the window beyond the visible part.
    const Screen screen{desktop, {100, 60, 1080, 680}};
    EXPECT_EQ(placeOn({screen}, {20, 500}), Place({100, 288})) << "left";
    EXPECT_EQ(placeOn({screen}, {88, 500}), Place({100, 288}));
    EXPECT_EQ(placeOn({screen}, {89, 500}), Place({101, 288}));
    EXPECT_EQ(placeOn({screen}, {1270, 500}), Place({770, 288})) << "right";
    EXPECT_EQ(placeOn({screen}, {300, 10}), Place({312, 60})) << "bottom";
    EXPECT_EQ(placeOn({screen}, {300, 799}), Place({312, 540})) << "top of the window at 740";
    EXPECT_EQ(placeOn({screen}, {300, 752}), Place({312, 540})) << "just fits";
    EXPECT_EQ(placeOn({screen}, {300, 751}), Place({312, 539}));
    EXPECT_EQ(placeOn({screen}, {0, 0}), Place({100, 60}));
    EXPECT_EQ(placeOn({screen}, {1279, 799}), Place({770, 540}));
}

TEST(PanelPlacement, putsTheLeftAndBottomEdgesOfATooLargeWindowOnTheScreen) {
    EXPECT_EQ(place({600, 400}, {1281, 200}), Place({0, 188}));
    EXPECT_EQ(place({600, 400}, {410, 801}), Place({612, 0}));
    EXPECT_EQ(place({600, 400}, {5000, 5000}), Place({0, 0}));
    EXPECT_EQ(place({600, 400}, {1280, 800}), Place({0, 0})) << "just fits";
    const Screen screen{desktop, {100, 60, 300, 150}};
    EXPECT_EQ(placeOn({screen}, {600, 400}), Place({100, 60})) << "too large for the visible part";
}

TEST(PanelPlacement, isOnTheScreenWithThePointer) {
    const ScreenRectangle left{-1920, -200, 1920, 1080};
    const ScreenRectangle above{0, 800, 1024, 768};
    const std::vector<Screen> screens{{desktop, desktop}, {left, left}, {above, above}};
    EXPECT_EQ(placeOn(screens, {-1000, 300}), Place({-988, 88}));
    EXPECT_EQ(placeOn(screens, {-1, 300}), Place({-410, 88})) << "not across the edge";
    EXPECT_EQ(placeOn(screens, {-1920, -200}), Place({-1908, -200}));
    EXPECT_EQ(placeOn(screens, {500, 1200}), Place({512, 988}));
    EXPECT_EQ(placeOn(screens, {500, 900}), Place({512, 800})) << "not across the edge";
    EXPECT_EQ(placeOn(screens, {1000, 1567}), Place({614, 1355}));
    EXPECT_EQ(placeOn(screens, {500, 400}), Place({512, 188}));
}

TEST(PanelPlacement, assignsASharedEdgeToTheScreenThatBeginsThere) {
    const ScreenRectangle right{1280, 0, 1280, 800};
    const ScreenRectangle above{0, 800, 1280, 800};
    const std::vector<Screen> screens{{desktop, desktop}, {right, right}, {above, above}};
    EXPECT_EQ(placeOn(screens, {1280, 400}), Place({1292, 188}));
    EXPECT_EQ(placeOn(screens, {1279.5, 400}), Place({870, 188}));
    EXPECT_EQ(placeOn(screens, {500, 800}), Place({512, 800}));
    EXPECT_EQ(placeOn(screens, {500, 799.5}), Place({512, 587.5}));
    EXPECT_EQ(placeOn(screens, {0, 0}), Place({12, 0}));
}

TEST(PanelPlacement, isOnTheFirstOfMirroredScreens) {
    const Screen first{desktop, {0, 0, 640, 800}};
    const Screen second{desktop, desktop};
    EXPECT_EQ(placeOn({first, second}, {600, 500}), Place({230, 288}));
    EXPECT_EQ(placeOn({second, first}, {600, 500}), Place({612, 288}));
}

TEST(PanelPlacement, isNowhereWhenThePointerIsOnNoScreen) {
    for (const ScreenPoint pointer :
         {ScreenPoint{1280, 400}, ScreenPoint{600, 800}, ScreenPoint{-0.5, 400}, ScreenPoint{600, -0.5},
          ScreenPoint{1280, 800}, ScreenPoint{5000, 5000}})
        EXPECT_EQ(place(pointer), std::nullopt) << pointer.x << ' ' << pointer.y;
    EXPECT_EQ(placeOn({}, {0, 0}), std::nullopt);
    EXPECT_EQ(placeOn({{{0, 0, 0, 0}, {0, 0, 0, 0}}}, {0, 0}), std::nullopt) << "a screen without an area";
}

TEST(PanelPlacement, searchesThePointerInTheWholeFrame) {
    EXPECT_EQ(placeOn({{desktop, {0, 0, 100, 100}}}, {600, 400}, {50, 50}), Place({50, 50}));
}

} // namespace
} // namespace tavel
