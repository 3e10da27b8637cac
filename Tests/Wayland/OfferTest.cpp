#include "Tests/Selections/Reading.h"
#include "Tests/Wayland/CompositorOwner.h"
#include "Tests/Wayland/WaylandPeers.h"

#include <gmock/gmock.h>

namespace tavel {

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class Offer : public testing::Test {
protected:
    WaylandPeers peers{longTimeOuts()};
    CompositorOwner owner{peers.compositor()};
};

TEST_F(Offer, ofTenThousandTypesHasTheFirstThousand) {
    std::vector<std::string> types;
    for (int i = 0; i < 10'000; ++i)
        types.push_back("net.example.type-" + std::to_string(i));
    owner.offer(types);
    owner.on(types[999], owner.value("the last"));
    owner.take();
    EXPECT_THAT(peers.board().types(), SizeIs(1'000));
    EXPECT_EQ(peers.board().types().back(), types[999]);
    EXPECT_EQ(peers.data(types[999]), "the last");
    EXPECT_EQ(peers.board().changeCount(), 1);
}

TEST_F(Offer, ofNoTypesIsAContent) {
    owner.offer({});
    owner.take();
    EXPECT_THAT(peers.board().types(), IsEmpty());
    EXPECT_EQ(peers.board().changeCount(), 1);
    EXPECT_EQ(peers.board().noticedChangeCount(), 1);
}

TEST_F(Offer, hasATypeOnceThatIsThereTwoThousandTimes) {
    std::vector<std::string> types(2'000, "image/png");
    types.push_back(plainTarget);
    owner.offer(types);
    owner.on(plainTarget, owner.value("text"));
    owner.take();
    EXPECT_THAT(peers.board().types(), ElementsAre("public.png", plainText));
    EXPECT_EQ(peers.text(), "text");
}

// 64 KiB. Compositors drop the connection of a program with much more.
TEST_F(Offer, ofTheProgramHasNoMoreNamesThanACompositorCanTell) {
    constexpr std::size_t most = std::size_t{64} * 1024;
    constexpr std::size_t longest = 255;
    PasteboardItem item;
    std::size_t bytes = 0;
    for (int i = 0; bytes + longest < most; ++i, bytes += longest) {
        std::string name = "net.example.type-" + std::to_string(i) + "-";
        name.resize(longest, 'x');
        item.push_back({name, Bytes()});
    }
    item.push_back({std::string(most - bytes, 'y'), Bytes()});
    EXPECT_EQ(peers.board().replaceWithItems({&item, 1}), 1);
    item.back().type += "y";
    EXPECT_EQ(peers.board().replaceWithItems({&item, 1}), std::nullopt);
    EXPECT_EQ(peers.board().changeCount(), 1);
}

TEST_F(Offer, ofTextUnderANameOfX11IsUtf8IfItCanBe) {
    for (const char* const target : {"STRING", "TEXT"}) {
        owner.offerValue(target, "voilà");
        owner.take();
        EXPECT_EQ(peers.text(), "voilà") << target;
        EXPECT_EQ(peers.board().string(plainText, 4)->size(), 5U) << "cut within a character, of " << target;
    }
}

TEST_F(Offer, ofThePrimarySelectionIsThatPasteboards) {
    const auto primary = peers.program().open(otherSelection);
    owner.offerValue(plainTarget, "selected");
    owner.take(Compositor::Kind::primary);
    EXPECT_EQ(primary->string(plainText, 100)->view(), "selected");
    EXPECT_EQ(primary->changeCount(), 1);
    EXPECT_EQ(peers.board().changeCount(), 0);
    const PasteboardItem item{{plainText, Bytes::copyOf("own")}};
    EXPECT_EQ(primary->replaceWithItems({&item, 1}), 2);
    EXPECT_EQ(peers.compositor().readAll(Compositor::Kind::primary, plainTarget), "own");
    EXPECT_EQ(peers.compositor().typesOf(Compositor::Kind::clipboard), std::nullopt);
}

// A program that copies without end must not hide its contents, as their values never come in time.
TEST_F(Offer, isNoticedWhileAProgramCopiesAgainAndAgain) {
    constexpr auto mark = "net.example.mark";
    owner.offer({mark});
    owner.on(mark, owner.silence());
    int noticed = 0; // on the program's thread
    peers.board().watch({{mark, 10}}, [&] { ++noticed; });
    const auto end = std::chrono::steady_clock::now() + atOnce;
    int told = 0;
    while (told < 3 && std::chrono::steady_clock::now() < end) {
        owner.take();
        peers.program().run([&] { told = noticed; });
    }
    EXPECT_GE(told, 3);
    peers.board().watch({}, {});
}

/// What was there before the program.
class ContentFromBefore : public testing::TestWithParam<bool> {
protected:
    Compositor compositor{{.tellsNewDevicesOfNoContent = GetParam()}};
    CompositorOwner owner{compositor};
};

TEST_P(ContentFromBefore, isNoChangeAndCanBeRead) {
    owner.offerValue(plainTarget, "from before");
    owner.take();
    WaylandProgram program(compositor.display(), longTimeOuts());
    const auto board = program.open(std::nullopt);
    EXPECT_EQ(board->changeCount(), 0);
    EXPECT_EQ(board->string(plainText, 100)->view(), "from before");
    owner.take();
    EXPECT_EQ(board->changeCount(), 1);
}

TEST_P(ContentFromBefore, isNothingBeforeTheFirstCopy) {
    WaylandProgram program(compositor.display(), longTimeOuts());
    const auto board = program.open(std::nullopt);
    EXPECT_EQ(board->changeCount(), 0);
    EXPECT_THAT(board->types(), IsEmpty());
    EXPECT_EQ(board->noticedChangeCount(), 0);
    owner.offerValue(plainTarget, "the first");
    owner.take();
    EXPECT_EQ(board->changeCount(), 1);
    EXPECT_EQ(board->string(plainText, 100)->view(), "the first");
}

INSTANTIATE_TEST_SUITE_P(TellsOfNothing, ContentFromBefore, testing::Bool());

} // namespace

} // namespace tavel
