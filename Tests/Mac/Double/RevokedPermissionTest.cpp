#include "Mac/MacKeyboardTap.h"
#include "Support/Error.h"
#include "TavelClipboardAgent/FilePaste/FilePaste.h"
#include "Tests/Mac/Double/DoubledMac.h"
#include "Tests/Unit/Doubles/TestPlatform.h"

#include <chrono>
#include <cstdint>
#include <memory>

namespace tavel {

using namespace doubles;
using namespace std::chrono_literals;

namespace {

class PlatformWithMacTap final : public TestPlatform {
public:
    KeyboardTap& keyboardTap() override { return macTap; }

    MacKeyboardTap macTap;
};

/// The agent's feature over the real adaptor, while the user takes the permission away.
class RevokedPermission : public DoubledMac {
protected:
    RevokedPermission() {
        platform_.focus.frontmost = RunningApplication{501, "com.apple.finder"};
        platform_.focus.role = "AXList";
        platform_.pasteboard->copyFromOutside("Bonjour");
        paste_->configure(true);
    }
    ~RevokedPermission() override { EXPECT_EQ(quartz().stalls, 0); }

    static Passage press() { return passTaps({kCGEventKeyDown, keyCode::v, keyFlag::command}); }
    static Passage release() { return passTaps({kCGEventKeyUp, keyCode::v, keyFlag::command}); }

    static void revoke() { quartz().refusesTaps = true; }

    void disable(CGEventType why = kCGEventTapDisabledByTimeout) {
        disableTaps(why);
        EXPECT_EQ(livingTaps(), 1) << "not removed by its own callback";
        platform_.loop.runPosted();
    }

    /// No key waits for the agent.
    void expectOff() {
        EXPECT_EQ(livingTaps(), 0);
        EXPECT_EQ(release(), Passage::passed);
        EXPECT_EQ(press(), Passage::passed);
        EXPECT_THROW(paste_->configure(true), Error);
        EXPECT_EQ(livingTaps(), 0);
    }

    void expectThatItWorksAgain() {
        quartz().refusesTaps = false;
        paste_->configure(true);
        EXPECT_EQ(livingTaps(), 1);
        EXPECT_EQ(release(), Passage::passed) << "of a press before the loss";
        EXPECT_EQ(press(), Passage::swallowed);
        EXPECT_EQ(release(), Passage::swallowed);
    }

    PlatformWithMacTap platform_;
    std::shared_ptr<FilePaste> paste_ = std::make_shared<FilePaste>(
        platform_, platform_.pasteboard, std::make_shared<ExportDirectory>(platform_.scratch / "exports"),
        [](std::int64_t) {});
};

} // namespace

TEST_F(RevokedPermission, isNoticedWithinASecond) {
    revoke();
    EXPECT_EQ(press(), Passage::heldUp);
    platform_.loop.advance(1s);
    expectOff();
    expectThatItWorksAgain();
}

TEST_F(RevokedPermission, isNoticedBeforeADisabledTapIsEnabled) {
    for (const CGEventType why : {kCGEventTapDisabledByTimeout, kCGEventTapDisabledByUserInput}) {
        disable(why);
        EXPECT_EQ(enabledTaps(), 1) << "as long as there is the permission";
        revoke();
        disable(why);
        expectOff();
        expectThatItWorksAgain();
        platform_.loop.advance(1s); // the panel opens
        paste_->configure(false);
        paste_->configure(true);
    }
}

TEST_F(RevokedPermission, isNoticedWhenTheFeatureIsSwitchedOn) {
    paste_->configure(false);
    revoke();
    EXPECT_EQ(press(), Passage::passed) << "the tap is disabled";
    EXPECT_THROW(paste_->configure(true), Error);
    expectOff();
    expectThatItWorksAgain();
}

TEST_F(RevokedPermission, keepsNoSwallowedKeyBack) {
    EXPECT_EQ(press(), Passage::swallowed);
    revoke();
    platform_.loop.advance(1s);
    expectOff();
    expectThatItWorksAgain();
}

TEST_F(RevokedPermission, closesThePanel) {
    EXPECT_EQ(press(), Passage::swallowed);
    EXPECT_EQ(release(), Passage::swallowed);
    platform_.loop.advance(120ms);
    ASSERT_EQ(platform_.panels.size(), 1U);
    revoke();
    disable();
    EXPECT_TRUE(platform_.panels.back()->destroyed);
    expectOff();
}

} // namespace tavel
