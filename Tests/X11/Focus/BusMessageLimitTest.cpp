#include "Linux/X11/Focus/BusConnection.h"
#include "Linux/X11/Focus/BusStream.h"
#include "Tests/X11/Focus/AccessibleProgram.h"
#include "Tests/X11/Focus/FocusDesktop.h"

#include <gtest/gtest.h>

#include <string>

namespace tavel {

namespace {

class BusMessageLimit : public testing::Test {
protected:
    BusMessageLimit() : bus_(desktop_.startBuses()), program_(bus_) {
        connection_ = BusConnection::open(bus_.address(), BusConnection::Clock::now() + inTime);
    }

    /// Asks for a list of elements whose only path has this length. Whether the reply comes.
    bool takesPathOf(std::size_t length) {
        AccessibleProgram::Element element;
        element.children = {"/" + std::string(length - 1, 'p')};
        program_.set("/list", element);
        return connection_->call({program_.name().c_str(), "/list", "org.a11y.atspi.Accessible"},
                                 "GetChildren", nullptr, "(a(so))",
                                 BusConnection::Clock::now() + inTime) != nullptr;
    }

    FocusDesktop desktop_;
    TestAccessibilityBus& bus_;
    AccessibleProgram program_;
    std::unique_ptr<BusConnection> connection_;
};

TEST_F(BusMessageLimit, closesTheConnectionInsteadOfTakingALargerMessage) {
    constexpr std::size_t envelope = 512; // more than a message needs besides its path
    ASSERT_NE(connection_, nullptr);
    EXPECT_TRUE(takesPathOf(largestBusMessage - envelope));
    EXPECT_FALSE(connection_->isLost());
    EXPECT_FALSE(takesPathOf(largestBusMessage));
    EXPECT_TRUE(connection_->isLost());
}

TEST_F(BusMessageLimit, doesNotKeepTheNextConnectionFromWorking) {
    ASSERT_NE(connection_, nullptr);
    EXPECT_FALSE(takesPathOf(largestBusMessage));
    connection_ = BusConnection::open(bus_.address(), BusConnection::Clock::now() + inTime);
    ASSERT_NE(connection_, nullptr);
    EXPECT_TRUE(takesPathOf(1000));
}

} // namespace

} // namespace tavel
