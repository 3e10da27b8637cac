#include "Tests/Support/TestProcess.h"
#include "Tests/Support/WaitUntil.h"
#include "Tests/Wayland/Compositor.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/Wayland/ScriptedClient.h"

#include <gmock/gmock.h>

#include <array>
#include <csignal>
#include <ostream>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

using Kind = Compositor::Kind;

const auto extManager = Pair("ext_data_control_manager_v1", 1U);
const auto wlrManager = Pair("zwlr_data_control_manager_v1", 2U);
const auto seat = Pair("wl_seat", 5U);

struct Family {
    const char* name;
    const DataControlInterfaces& (*interfaces)();
};

void PrintTo(const Family& family, std::ostream* out) {
    *out << family.name;
}

/// The same facts for both protocols.
class CompositorProtocol : public testing::TestWithParam<Family> {
protected:
    ScriptedClient connect(const Compositor& compositor) const {
        return {compositor.display(), GetParam().interfaces()};
    }

    Compositor compositor_;
    CompositorOwner owner_{compositor_};
};

INSTANTIATE_TEST_SUITE_P(, CompositorProtocol,
                         testing::Values(Family{"ext", extDataControl}, Family{"wlr", wlrDataControl}),
                         [](const auto& one) { return one.param.name; });

TEST_P(CompositorProtocol, tellsANewDeviceOfWhatIsThere) {
    owner_.offer({"text/plain", "text/html"});
    owner_.take();
    ScriptedClient client = connect(compositor_);
    EXPECT_THAT(client.takeEvents(), ElementsAre("clipboard: text/plain text/html", "primary: none"));
}

TEST_P(CompositorProtocol, cancelsASourceBeforeItTellsOfTheNextOne) {
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    client.select(Kind::clipboard, client.makeSource({"text/plain"}));
    EXPECT_THAT(client.takeEvents(), ElementsAre("clipboard: text/plain"));
    client.select(Kind::clipboard, client.makeSource({"text/html"}));
    EXPECT_THAT(client.takeEvents(), ElementsAre("cancelled", "clipboard: text/html"));
}

TEST_P(CompositorProtocol, clearsTheSelectionOfADestroyedSource) {
    ScriptedClient client = connect(compositor_);
    wl_proxy* const source = client.makeSource({"text/plain"});
    client.select(Kind::primary, source);
    client.takeEvents();
    client.destroySource(source);
    EXPECT_THAT(client.takeEvents(), ElementsAre("primary: none"));
}

TEST_P(CompositorProtocol, refusesASourceThatWasUsed) {
    ScriptedClient client = connect(compositor_);
    wl_proxy* const source = client.makeSource({"text/plain"});
    client.select(Kind::clipboard, source);
    EXPECT_EQ(client.takeError(), 0U);
    client.select(Kind::primary, source);
    EXPECT_EQ(client.takeError(), 1U);
    waitUntil([&] { return compositor_.clientCount() == 0; }, TestProcess::deadline);
}

TEST_P(CompositorProtocol, closesRequestsOfAnOfferThatWasReplaced) {
    ScriptedClient setter = connect(compositor_);
    setter.select(Kind::clipboard, setter.makeSource({"text/plain"}));
    setter.takeEvents();
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    wl_proxy* const former = client.offer(Kind::clipboard);
    setter.select(Kind::clipboard, setter.makeSource({"text/plain"}));
    EXPECT_THAT(setter.takeEvents(), ElementsAre("cancelled", "clipboard: text/plain"));
    EXPECT_EQ(readToEnd(client.receive(former, "text/plain")), "");
    EXPECT_THAT(setter.takeEvents(), IsEmpty());
    client.takeEvents();
    client.receive(client.offer(Kind::clipboard), "text/plain");
    EXPECT_THAT(setter.takeEvents(), ElementsAre("send text/plain"));
}

TEST_P(CompositorProtocol, clearsTheSelectionOfAnOwnerThatDies) {
    owner_.offer({"text/plain"});
    owner_.on("text/plain", owner_.silence());
    owner_.take();
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    const Descriptor readEnd = client.receive(client.offer(Kind::clipboard), "text/plain");
    const CompositorOwner::Request request = owner_.awaitRequest("text/plain");
    EXPECT_TRUE(request.transfer->write("beginning"));
    owner_.disconnect();
    EXPECT_EQ(readToEnd(readEnd), "beginning");
    EXPECT_THAT(client.takeEvents(), ElementsAre("clipboard: none"));
}

TEST_P(CompositorProtocol, finishesDevices) {
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    compositor_.finishDevices();
    owner_.take();
    client.select(Kind::clipboard, client.makeSource({"text/plain"}));
    EXPECT_THAT(client.takeEvents(), ElementsAre("finished"));
    EXPECT_TRUE(owner_.owns());
    EXPECT_EQ(compositor_.deviceCount(), 0U);
}

TEST_P(CompositorProtocol, answersNothingWhileItHangs) {
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    compositor_.hang();
    client.select(Kind::clipboard, client.makeSource({"text/plain"}));
    client.flush();
    // An idle compositor would have handled the request before it counts again.
    for (int time = 0; time < 3; ++time)
        EXPECT_EQ(compositor_.changesOf(Kind::clipboard), 0U);
    owner_.take(Kind::primary);
    compositor_.goOn();
    EXPECT_THAT(client.takeEvents(), ElementsAre("primary:", "clipboard: text/plain"));
}

TEST_P(CompositorProtocol, canKeepQuietAboutNoContent) {
    Compositor compositor({.tellsNewDevicesOfNoContent = false});
    EXPECT_THAT(connect(compositor).takeEvents(), IsEmpty());
}

TEST_P(CompositorProtocol, canKeepQuietToTheSetter) {
    Compositor compositor({.tellsSetter = false});
    ScriptedClient setter = connect(compositor);
    ScriptedClient other = connect(compositor);
    setter.takeEvents();
    other.takeEvents();
    setter.select(Kind::clipboard, setter.makeSource({"text/plain"}));
    EXPECT_THAT(setter.takeEvents(), IsEmpty());
    EXPECT_THAT(other.takeEvents(), ElementsAre("clipboard: text/plain"));
}

TEST_P(CompositorProtocol, canTellASelectionTwice) {
    Compositor compositor({.timesTold = 2});
    ScriptedClient client = connect(compositor);
    client.takeEvents();
    client.select(Kind::primary, client.makeSource({"text/plain"}));
    EXPECT_THAT(client.takeEvents(), ElementsAre("primary: text/plain", "primary: text/plain"));
}

TEST_P(CompositorProtocol, canHaveNoPrimarySelection) {
    Compositor compositor({.hasPrimary = false});
    ScriptedClient client = connect(compositor);
    EXPECT_THAT(client.takeEvents(), ElementsAre("clipboard: none"));
}

/// The client's reading is what lets the compositor go on.
TEST_P(CompositorProtocol, sendsLongListsWhileTheClientReads) {
    ScriptedClient client = connect(compositor_);
    client.takeEvents();
    owner_.offer(std::vector<std::string>(10'000, "application/x-type-with-a-long-name"));
    owner_.take();
    const std::vector<std::string> events = client.takeEvents();
    ASSERT_EQ(events.size(), 1U);
    EXPECT_EQ(events.front().size(), std::string("clipboard:").size() + 10'000 * 36);
}

TEST(CompositorGlobals, areThoseOfTheOptions) {
    const auto globals = [](const Compositor::Options& options) {
        const Compositor compositor(options);
        return ScriptedClient(compositor.display(), extDataControl()).globals();
    };
    EXPECT_THAT(globals({}), UnorderedElementsAre(seat, extManager, wlrManager));
    EXPECT_THAT(globals({.offersExt = false}), UnorderedElementsAre(seat, wlrManager));
    EXPECT_THAT(globals({.offersWlr = false}), UnorderedElementsAre(seat, extManager));
    EXPECT_THAT(globals({.offersExt = false, .offersWlr = false}), UnorderedElementsAre(seat));
    EXPECT_THAT(globals({.offersExt = false, .hasPrimary = false}),
                UnorderedElementsAre(seat, Pair("zwlr_data_control_manager_v1", 1U)));
    EXPECT_THAT(globals({.offersWlr = false, .hasSeat = false}), UnorderedElementsAre(extManager));
}

class ScriptedOwnerOfCompositor : public testing::Test {
protected:
    Compositor compositor_;
    CompositorOwner owner_{compositor_};
};

TEST_F(ScriptedOwnerOfCompositor, writesPartsOneByOne) {
    owner_.offer({"text/plain"});
    owner_.on("text/plain", owner_.parts({"one", "two"}));
    owner_.take();
    const Descriptor readEnd = compositor_.read(Kind::clipboard, "text/plain");
    std::array<char, 10> buffer{};
    EXPECT_EQ(read(readEnd.number(), buffer.data(), buffer.size()), 3);
    EXPECT_EQ(readToEnd(readEnd), "two");
}

TEST_F(ScriptedOwnerOfCompositor, survivesAReaderThatIsGone) {
    const auto before = std::signal(SIGPIPE, SIG_DFL);
    bool wasWritten = true;
    owner_.offer({"text/plain"});
    owner_.on("text/plain", [&](const CompositorOwner::Request& request) {
        request.transfer->awaitReaderEnd();
        wasWritten = request.transfer->write("late");
    });
    owner_.on("text/html", owner_.value("next"));
    owner_.take();
    compositor_.read(Kind::clipboard, "text/plain");
    EXPECT_EQ(compositor_.readAll(Kind::clipboard, "text/html"), "next");
    EXPECT_FALSE(wasWritten);
    std::signal(SIGPIPE, before);
}

TEST_F(ScriptedOwnerOfCompositor, endsWhileNobodyReads) {
    owner_.offerValue("text/plain", std::string(std::size_t{1} << 20U, 'x'));
    owner_.take();
    const Descriptor readEnd = compositor_.read(Kind::clipboard, "text/plain");
    owner_.awaitRequest("text/plain");
    owner_.disconnect();
    EXPECT_LT(readToEnd(readEnd).size(), std::size_t{1} << 20U);
    EXPECT_FALSE(owner_.owns());
}

} // namespace

} // namespace tavel
