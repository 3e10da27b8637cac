#include "Mac/MacNamePanelView.h"
#include "Tests/Base/TestedEventLoop.h"

#include <gtest/gtest.h>

namespace tavel {

/// Whatever program is in front.
TEST(MacNamePanelView, getsTheKeyboardOnDemand) {
    const auto loop = makeTestedEventLoop();
    const auto view = makeMacNamePanelView({"Title", "Extension", "stem", "Cancel", "Confirm"}, {});
    ASSERT_NE(view, nullptr);
    EXPECT_FALSE(view->hasKeyboard());
    view->demandKeyboard();
    EXPECT_FALSE(view->hasKeyboard()) << "it is not shown";
    view->show();
    view->demandKeyboard();
    runUntil(*loop, [&] { return view->hasKeyboard(); });
    view->hide();
}

} // namespace tavel
