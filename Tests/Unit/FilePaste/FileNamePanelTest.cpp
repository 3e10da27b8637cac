#include "TavelClipboardAgent/FilePaste/FileNamePanel.h"

#include "Tests/Unit/Doubles/TestPlatform.h"
#include "Tests/Unit/FilePaste/FilePasteFixture.h"

#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavel {
namespace {

constexpr std::string_view invalidName = "Nom invalide ou réservé. L’extension est conservée.";

class NamePanel : public testing::Test {
protected:
    using Answer = std::optional<std::string>;

    void make(std::string_view stem, std::string_view ext) {
        panel = FileNamePanel::make(platform, stem, ext);
        panel->setFinished([this](const Answer& name) { answers.push_back(name); });
        actions = window().actions;
    }

    PanelWindow& window() { return *platform.panels.back(); }

    void confirm(std::string_view stem) {
        window().entered = stem;
        actions.confirm();
    }

    TestPlatform platform;
    std::shared_ptr<FileNamePanel> panel;
    NamePanelActions actions; // still callable after the window has closed
    std::vector<Answer> answers;
};

TEST_F(NamePanel, isHiddenUntilShown) {
    make("Rapport", "pdf");
    EXPECT_FALSE(window().shown);
    panel->show();
    EXPECT_TRUE(window().shown);
    panel->hide();
    EXPECT_FALSE(window().shown);
    EXPECT_TRUE(answers.empty());
}

TEST_F(NamePanel, hasItsTitleAndLabels) {
    for (const std::string ext : {"pdf", "jpg", "png", "gif", "svg", "webp", "tiff", "txt"}) {
        make("Rapport", ext);
        EXPECT_EQ(window().texts.title, "Nommer avant de coller");
        EXPECT_EQ(window().texts.extensionLabel, "Extension conservée : ." + ext);
        EXPECT_EQ(window().texts.stem, "Rapport");
        EXPECT_EQ(window().texts.cancelTitle, "Annuler");
        EXPECT_EQ(window().texts.confirmTitle, "Coller");
    }
}

TEST_F(NamePanel, reportsTheFullName) {
    make("Rapport", "pdf");
    actions.confirm();
    EXPECT_EQ(answers, std::vector<Answer>{"Rapport.pdf"});
}

TEST_F(NamePanel, reportsTheFieldsContentOnConfirming) {
    make("Rapport", "pdf");
    confirm("  Été\n");
    EXPECT_EQ(answers, std::vector<Answer>{"Été.pdf"});
}

TEST_F(NamePanel, keepsTheExtensionWhateverIsEntered) {
    make("a", "txt");
    confirm("photo.png");
    confirm("a.txt");
    EXPECT_EQ(answers, (std::vector<Answer>{"photo.png.txt", "a.txt.txt"}));
}

TEST_F(NamePanel, staysWithAHintWhenTheNameIsInvalid) {
    for (const std::string_view stem : {"CON", "   ", "", "a/b", "a.", "a\xFF"}) {
        make("a", "png");
        panel->show();
        confirm(stem);
        EXPECT_EQ(window().hint, invalidName) << stem;
        EXPECT_TRUE(window().shown) << stem;
        EXPECT_TRUE(answers.empty()) << stem;
    }
}

TEST_F(NamePanel, staysWithAHintWhenFileSystemsCannotHoldTheName) {
    std::string longest = "éé"; // 251 bytes, so that 255 remain with the extension
    for (int count = 0; count < 82; ++count)
        longest += "語";
    longest += "x";
    make("a", "png");
    panel->show();
    confirm(longest + "y");
    EXPECT_EQ(window().hint, invalidName);
    EXPECT_TRUE(window().shown);
    EXPECT_TRUE(answers.empty());
    confirm(longest);
    EXPECT_EQ(answers, std::vector<Answer>{longest + ".png"});
}

TEST_F(NamePanel, hasNoHintAtFirst) {
    make("a", "png");
    panel->show();
    EXPECT_EQ(window().hint, "");
    confirm("b");
    EXPECT_EQ(window().hint, "");
}

TEST_F(NamePanel, keepsTheHintAfterAValidName) {
    make("a", "png");
    confirm("a/b");
    window().entered = "b";
    EXPECT_EQ(window().hint, invalidName);
    actions.confirm();
    EXPECT_EQ(window().hint, invalidName);
    EXPECT_EQ(answers, std::vector<Answer>{"b.png"});
}

TEST_F(NamePanel, reportsCancelling) {
    make("a", "png");
    actions.cancel();
    EXPECT_EQ(answers, std::vector{Answer()});
}

TEST_F(NamePanel, reportsCancellingAfterAnInvalidName) {
    make("a", "png");
    confirm("CON");
    actions.cancel();
    EXPECT_EQ(answers, std::vector{Answer()});
}

TEST_F(NamePanel, reportsEachAnswer) {
    make("a", "png");
    confirm("b");
    actions.cancel();
    confirm("c");
    panel->confirmName();
    panel->cancelName();
    EXPECT_EQ(answers, (std::vector<Answer>{"b.png", std::nullopt, "c.png", "c.png", std::nullopt}));
}

TEST_F(NamePanel, neitherHidesNorClosesItself) {
    make("a", "png");
    panel->show();
    confirm("b");
    actions.cancel();
    EXPECT_TRUE(window().shown);
    EXPECT_FALSE(window().destroyed);
}

TEST_F(NamePanel, staysOpenWithoutACallback) {
    panel = FileNamePanel::make(platform, "a", "png");
    panel->show();
    window().actions.confirm();
    window().actions.cancel();
    EXPECT_TRUE(window().shown);
    EXPECT_EQ(window().hint, "");
    window().entered = "CON";
    window().actions.confirm();
    EXPECT_EQ(window().hint, invalidName);
}

TEST_F(NamePanel, closesItsWindowWhenDestroyed) {
    make("a", "png");
    panel.reset();
    EXPECT_TRUE(window().destroyed);
    actions.confirm();
    actions.cancel();
    EXPECT_TRUE(answers.empty());
}

TEST_F(NamePanel, mayBeDestroyedByItsCallback) {
    for (const bool confirmed : {true, false}) {
        make("a", "png");
        actions = {}; // the window's copy goes with the panel
        int told = 0;
        panel->setFinished([&](const Answer&) {
            panel.reset();
            ++told;
        });
        confirmed ? window().actions.confirm() : window().actions.cancel();
        EXPECT_EQ(told, 1);
        EXPECT_TRUE(window().destroyed);
    }
}

TEST_F(NamePanel, staysIfThereIsNoMemoryForTheAnswer) {
    make("a", "png");
    panel->setFinished([](const Answer&) { throw std::bad_alloc(); });
    panel->show();
    EXPECT_NO_THROW(actions.confirm());
    EXPECT_NO_THROW(actions.cancel());
    EXPECT_TRUE(window().shown);
}

TEST_F(NamePanel, isPlacedBesideThePointer) {
    const ScreenRectangle frame{0, 0, 1280, 800};
    platform.surroundings = {{100, 500}, {{frame, frame}}, {410, 198}};
    make("a", "png");
    ASSERT_TRUE(window().origin);
    EXPECT_EQ(window().origin->x, 112);
    EXPECT_EQ(window().origin->y, 290);
}

TEST_F(NamePanel, isNotPlacedWhenThePointerIsOnNoScreen) {
    platform.surroundings = {{100, 500}, {}, {410, 198}};
    make("a", "png");
    EXPECT_FALSE(window().origin);
}

TEST_F(NamePanel, cannotBeMadeWithoutAWindow) {
    platform.showsWindows = false;
    EXPECT_EQ(errorOf([this] { FileNamePanel::make(platform, "a", "png"); }), "Tavel 6");
}

} // namespace
} // namespace tavel
