#include "Linux/Base/GlibEventLoop.h"
#include "Linux/Selections/SelectionEventSource.h"
#include "Linux/Selections/SelectionPasteboard.h"
#include "Tests/X11/ResidentMemory.h"
#include "Tests/X11/X11Peers.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>

namespace tavel {

namespace {

constexpr int requestCount = 150'000;

/// A program that requests the content of CLIPBOARD from a window of its own, without end and without reading
/// answers.
class Requestor {
public:
    explicit Requestor(const std::string& display) : connection_(X11Connection::open(display.c_str())) {
        clipboard_ = connection_->atom("CLIPBOARD");
        property_ = connection_->atom("REQUESTED");
    }

    /// Returns when the server has passed the requests on.
    void request(const std::string& target, int count) {
        const xcb_atom_t atom = connection_->atom(target);
        for (int i = 0; i < count; ++i)
            xcb_convert_selection(connection_->get(), connection_->window(), clipboard_, atom, property_,
                                  XCB_CURRENT_TIME);
        std::free(
            xcb_get_input_focus_reply(connection_->get(), xcb_get_input_focus(connection_->get()), nullptr));
    }

    /// The answers that have come until now.
    int takeAnswers() {
        std::free(
            xcb_get_input_focus_reply(connection_->get(), xcb_get_input_focus(connection_->get()), nullptr));
        int answers = 0;
        while (auto* const event = xcb_poll_for_event(connection_->get())) {
            answers += (event->response_type & 0x7F) == XCB_SELECTION_NOTIFY ? 1 : 0;
            std::free(event);
        }
        return answers;
    }

private:
    std::unique_ptr<X11Connection> connection_;
    xcb_atom_t clipboard_ = 0;
    xcb_atom_t property_ = 0;
};

TEST(Flood, ofRequestsTakesNoMemoryAndLetsAnotherProgramHaveItsTurn) {
    X11Peers peers(longTimeOuts());
    peers.write("public.utf8-plain-text", "text");
    Requestor flooder(peers.display());
    Requestor another(peers.display());
    int answersBefore = 0;
    peers.program().run([&] { // the program's thread is busy here, so nothing is answered
        flooder.request("UTF8_STRING", requestCount);
        another.request("UTF8_STRING", 1);
        const std::size_t before = residentBytes();
        peers.program().selections().synchronize();
        EXPECT_LT(residentBytes(), before + residentGrowth) << "with all requests behind it";
        while (another.takeAnswers() == 0)
            peers.program().selections().connection().dispatchEvents();
        answersBefore = flooder.takeAnswers();
    });
    EXPECT_LT(answersBefore, requestCount / 10);
}

TEST(Flood, ofRequestsLetsCommandsAndTimersHaveTheirTurn) {
    using namespace std::chrono_literals;
    const X11Peers peers(longTimeOuts());
    GlibEventLoop loop;
    const auto selections =
        std::make_shared<X11Selections>(X11Connection::open(peers.display().c_str()), longTimeOuts());
    const SelectionEventSource source(selections);
    SelectionPasteboard board(selections, std::nullopt);
    const std::array values{
        PasteboardValue{"public.utf8-plain-text", PasteboardValue::Form::text, Bytes::copyOf("text")}};
    ASSERT_TRUE(board.replaceWithValues(values));

    Requestor flooder(peers.display());
    int commands = 0;
    int timers = 0;
    loop.postAfter(0ms, [&] { ++timers; });
    loop.post([&] { ++commands; });
    flooder.request("UTF8_STRING", requestCount);
    while (commands == 0 || timers == 0)
        loop.runOnce(100ms);
    EXPECT_LT(flooder.takeAnswers(), requestCount / 10);
}

} // namespace

} // namespace tavel
