#include "Tests/X11/X11Peers.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <utility>

namespace {

/// Runs once after the tested program's request for a selection has reached the server.
std::function<void(xcb_connection_t*)> afterTaking;

} // namespace

/// Stands before libxcb's function of this name for the whole test program.
extern "C" xcb_void_cookie_t xcb_set_selection_owner(xcb_connection_t* connection, xcb_window_t owner,
                                                     xcb_atom_t selection, xcb_timestamp_t time) {
    static const auto real =
        reinterpret_cast<decltype(&xcb_set_selection_owner)>(dlsym(RTLD_NEXT, "xcb_set_selection_owner"));
    const xcb_void_cookie_t cookie = real(connection, owner, selection, time);
    if (const auto action = std::exchange(afterTaking, nullptr))
        action(connection);
    return cookie;
}

namespace tavel {

namespace {

void roundTrip(xcb_connection_t* connection) {
    std::free(xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

class SimultaneousCopy : public testing::Test {
protected:
    /// Another program takes the selection between the taking and the moment when the program learns of it.
    void letAnotherProgramFollow() {
        afterTaking = [this](xcb_connection_t* connection) {
            roundTrip(connection);
            xcb_set_selection_owner(another_->get(), another_->window(), another_->atom("CLIPBOARD"),
                                    XCB_CURRENT_TIME);
            roundTrip(another_->get());
        };
    }

    bool isAnothers() {
        const auto cookie = xcb_get_selection_owner(another_->get(), another_->atom("CLIPBOARD"));
        const X11Reply<xcb_get_selection_owner_reply_t> reply(
            xcb_get_selection_owner_reply(another_->get(), cookie, nullptr));
        return reply->owner == another_->window();
    }

    X11Peers peers_{longTimeOuts()};
    std::unique_ptr<X11Connection> another_ = X11Connection::open(peers_.display().c_str());
};

TEST_F(SimultaneousCopy, afterAWriteIsNotTakenForTheWriteNorTakenBack) {
    const std::int64_t before = peers_.board().changeCount();
    letAnotherProgramFollow();
    const std::array values{
        PasteboardValue{"public.utf8-plain-text", PasteboardValue::Form::text, Bytes::copyOf("text")}};
    EXPECT_EQ(peers_.board().replaceWithValues(values), before + 1);
    EXPECT_EQ(peers_.board().changeCount(), before + 2) << "which the next poll reports";
    EXPECT_TRUE(isAnothers());
}

TEST_F(SimultaneousCopy, afterTypesWereAddedIsNotTakenForTheAddition) {
    peers_.write("public.utf8-plain-text", "text");
    const std::int64_t before = peers_.board().changeCount();
    letAnotherProgramFollow();
    const Representation added{"net.example.added", Bytes::copyOf("added")};
    EXPECT_EQ(peers_.board().addTypes({&added, 1}), before + 1);
    EXPECT_EQ(peers_.board().changeCount(), before + 2);
    EXPECT_TRUE(isAnothers());
}

} // namespace

} // namespace tavel
