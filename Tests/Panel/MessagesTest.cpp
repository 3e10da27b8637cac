#include "Linux/Panel/PanelMessages.h"

#include <gmock/gmock.h>

#include <string>

namespace tavel {

namespace {

/// All 256 byte values.
std::string allBytes() {
    std::string bytes;
    for (int byte = 0; byte < 256; ++byte)
        bytes += static_cast<char>(byte);
    return bytes;
}

/// The message without its line feed. Checks that it is a single line.
std::string bareLine(const std::string& line) {
    EXPECT_EQ(line.find('\n'), line.size() - 1);
    return line.substr(0, line.size() - 1);
}

template <typename Message>
Message sentReport(const Message& message) {
    const auto report = panelReportFrom(bareLine(lineOf(PanelReport(message))));
    return std::get<Message>(report.value());
}

template <typename Message>
Message sentRequest(const Message& message) {
    const auto request = panelRequestFrom(bareLine(lineOf(PanelRequest(message))));
    return std::get<Message>(request.value());
}

TEST(PanelMessages, theStartArrivesAsItWasSent) {
    const PanelStart start = sentRequest(PanelStart{{"title", "", allBytes(), "no\n", "yes"}, 4'194'304});
    EXPECT_EQ(start.process, 4'194'304);
    EXPECT_EQ(start.texts.title, "title");
    EXPECT_EQ(start.texts.extensionLabel, "");
    EXPECT_EQ(start.texts.stem, allBytes());
    EXPECT_EQ(start.texts.cancelTitle, "no\n");
    EXPECT_EQ(start.texts.confirmTitle, "yes");
}

TEST(PanelMessages, requestsArriveAsTheyWereSent) {
    const ScreenPoint origin = sentRequest(ScreenPoint{-0.1, 1e300});
    EXPECT_EQ(origin.x, -0.1);
    EXPECT_EQ(origin.y, 1e300);
    sentRequest(PanelShow{});
    EXPECT_EQ(sentRequest(PanelHint{""}).text, "");
    EXPECT_EQ(sentRequest(PanelHint{allBytes()}).text, allBytes());
}

TEST(PanelMessages, reportsArriveAsTheyWereSent) {
    const PanelReady ready = sentReport(PanelReady{
        {{1.5, 2}, {{{0, 1, 2, 3}, {4, 5, 6, 7}}, {{8, 9, 10, 11}, {12, 13, 14, 15}}}, {410, 170}}});
    EXPECT_EQ(ready.surroundings.pointer.x, 1.5);
    EXPECT_EQ(ready.surroundings.pointer.y, 2);
    EXPECT_EQ(ready.surroundings.window.width, 410);
    EXPECT_EQ(ready.surroundings.window.height, 170);
    ASSERT_EQ(ready.surroundings.screens.size(), 2U);
    const Screen& second = ready.surroundings.screens.back();
    EXPECT_EQ(second.frame.x, 8);
    EXPECT_EQ(second.frame.height, 11);
    EXPECT_EQ(second.visibleFrame.y, 13);
    EXPECT_EQ(second.visibleFrame.width, 14);
    EXPECT_TRUE(sentReport(PanelReady{}).surroundings.screens.empty());
    EXPECT_EQ(sentReport(PanelConfirmed{allBytes()}).text, allBytes());
    sentReport(PanelCancelled{});
    EXPECT_EQ(sentReport(PanelCopied{"Été\n"}).text, "Été\n");
}

TEST(PanelMessages, anythingElseIsNone) {
    for (const char* const line : {"",
                                   " ",
                                   "show ",
                                   "Show",
                                   "show 1",
                                   "origin",
                                   "origin 1",
                                   "origin 1 2 3",
                                   "origin 1 x",
                                   "origin 1  2",
                                   "origin nan 1",
                                   "origin 1 inf",
                                   "origin 1,5 2",
                                   "hint",
                                   "hint !",
                                   "hint YQ YQ",
                                   "start 1 YQ YQ YQ YQ",
                                   "start 0 YQ YQ YQ YQ YQ",
                                   "start 1e99 YQ YQ YQ YQ YQ",
                                   "cancel",
                                   "hide"})
        EXPECT_FALSE(panelRequestFrom(line)) << line;
    for (const char* const line :
         {"", "ready", "ready 1 2 3", "ready 1 2 3 4 ", "ready 1 2 3 4 1 2 3 4",
          "ready 1 2 3 4 1 2 3 4 5 6 7 8 9", "confirm", "confirm -", "cancel YQ", "show"})
        EXPECT_FALSE(panelReportFrom(line)) << line;
}

} // namespace

} // namespace tavel
