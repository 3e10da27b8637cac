#include "Linux/X11/EventQueue.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace tavel {
namespace {

constexpr std::uint32_t resourceMask = 0x1FFFFF;

/// Windows of three clients.
constexpr xcb_window_t ofA = 0x400001;
constexpr xcb_window_t anotherOfA = 0x40ABCD;
constexpr xcb_window_t ofB = 0x600001;

EventQueue::Event eventOf(int kind, std::uint32_t sequence) {
    auto* const event = static_cast<xcb_generic_event_t*>(std::calloc(1, sizeof(xcb_generic_event_t)));
    event->response_type = static_cast<std::uint8_t>(kind);
    event->full_sequence = sequence;
    return EventQueue::Event(event);
}

EventQueue::Event request(xcb_window_t requestor, xcb_atom_t target, int kind = XCB_SELECTION_REQUEST) {
    EventQueue::Event event = eventOf(kind, 0);
    auto& request = reinterpret_cast<xcb_selection_request_event_t&>(*event);
    request.requestor = requestor;
    request.target = target;
    return event;
}

EventQueue::Event change(std::uint32_t sequence) {
    return eventOf(XCB_PROPERTY_NOTIFY, sequence);
}

/// Everything that waits, in the order in which it is handled: the targets of requests, "*" for other events.
std::string handled(EventQueue& queue) {
    std::string order;
    while (!queue.isEmpty()) {
        const EventQueue::Event event = queue.next();
        const bool isRequest = (event->response_type & ~sentByProgram) == XCB_SELECTION_REQUEST;
        order += isRequest
                     ? std::to_string(reinterpret_cast<const xcb_selection_request_event_t&>(*event).target)
                     : "*";
    }
    return order;
}

class EventQueueTest : public testing::Test {
protected:
    void fill(xcb_window_t requestor) {
        for (std::size_t i = 0; i < EventQueue::mostRequestsOfAClient; ++i)
            EXPECT_EQ(queue.push(request(requestor, 1)), nullptr) << i;
    }

    EventQueue queue{resourceMask};
};

TEST_F(EventQueueTest, keepsTheOrderOfWhatOneProgramCauses) {
    queue.push(request(ofA, 1));
    queue.push(change(1));
    queue.push(request(anotherOfA, 2));
    queue.push(change(2));
    EXPECT_EQ(handled(queue), "1*2*");
    EXPECT_TRUE(queue.isEmpty());
}

TEST_F(EventQueueTest, letsClientsTakeTurns) {
    for (const xcb_atom_t target : {1U, 2U, 3U})
        queue.push(request(ofA, target));
    for (const xcb_atom_t target : {7U, 8U})
        queue.push(request(ofB, target));
    EXPECT_EQ(handled(queue), "17283");
}

TEST_F(EventQueueTest, hasRoomForALimitedNumberOfRequestsOfOneClientAndForThoseOfOthers) {
    fill(ofA);
    const EventQueue::Event excess = queue.push(request(anotherOfA, 2));
    ASSERT_NE(excess, nullptr);
    EXPECT_EQ(reinterpret_cast<const xcb_selection_request_event_t&>(*excess).target, 2U);
    EXPECT_EQ(queue.push(request(ofB, 1)), nullptr);
    queue.next();
    EXPECT_EQ(queue.push(request(ofA, 1)), nullptr) << "as one was handled";
}

TEST_F(EventQueueTest, dropsTheRequestsOfAClientThatGoesOnAndOn) {
    fill(ofA);
    for (std::size_t i = 0; i < EventQueue::mostRequestsOfAClient; ++i)
        EXPECT_NE(queue.push(request(ofA, 2)), nullptr) << i;
    EXPECT_EQ(queue.push(request(ofA, 2)), nullptr);
    EXPECT_EQ(handled(queue), std::string(EventQueue::mostRequestsOfAClient, '1'));
    fill(ofA);
    EXPECT_NE(queue.push(request(ofA, 2)), nullptr) << "as all before were handled";
}

TEST_F(EventQueueTest, takesRequestsThatProgramsSentForThoseOfOneClient) {
    constexpr int sent = XCB_SELECTION_REQUEST | sentByProgram;
    for (std::uint32_t i = 0; i < EventQueue::mostRequestsOfAClient; ++i)
        EXPECT_EQ(queue.push(request(i << 21, 1, sent)), nullptr);
    EXPECT_NE(queue.push(request(ofB, 1, sent)), nullptr);
    EXPECT_EQ(queue.push(request(ofB, 1)), nullptr) << "which the server has sent";
}

TEST_F(EventQueueTest, hasRoomForALimitedNumberOfOtherEvents) {
    for (std::uint32_t i = 0; i < EventQueue::mostEvents; ++i)
        EXPECT_EQ(queue.push(change(i)), nullptr);
    const EventQueue::Event excess = queue.push(change(7'777));
    ASSERT_NE(excess, nullptr);
    EXPECT_EQ(excess->full_sequence, 7'777U);
    EXPECT_EQ(queue.push(request(ofA, 1)), nullptr);
}

TEST_F(EventQueueTest, letsAnEventWaitForALimitedNumberOfEarlierRequests) {
    fill(ofA);
    queue.push(change(1));
    queue.push(change(2));
    const std::string ahead(EventQueue::mostRequestsAhead, '1');
    EXPECT_TRUE(handled(queue).starts_with(ahead + "*" + ahead + "*1"));
}

TEST_F(EventQueueTest, neverHandlesARequestBeforeAnEarlierEvent) {
    queue.push(change(1));
    queue.push(request(ofA, 1));
    queue.push(change(2));
    queue.push(request(ofB, 2));
    EXPECT_EQ(handled(queue), "*1*2");
}

TEST_F(EventQueueTest, tellsWhetherAnEventFromBeforeAReplyWaits) {
    EXPECT_FALSE(queue.hasEventBefore(10));
    queue.push(request(ofA, 1));
    EXPECT_FALSE(queue.hasEventBefore(10)) << "a request is none";
    queue.push(change(9));
    EXPECT_TRUE(queue.hasEventBefore(10));
    EXPECT_FALSE(queue.hasEventBefore(9));
}

} // namespace
} // namespace tavel
